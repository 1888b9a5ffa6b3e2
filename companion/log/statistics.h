/// What the samples of a quantity have in common, found while they pass by.
#pragma once

#include "companion/log/reader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace companion
{

/// How far apart in time the samples are, from which the gaps follow: intervals of more than five
/// times the usual one. That is the one which two of three do not exceed, since samples of a row
/// may come in pairs, those of other rows between them.
class Intervals
{
public:
    /// Time that ran backwards or stood still is no interval.
    void take(std::int64_t milliseconds)
    {
        if (milliseconds > 0 && milliseconds < exact)
            ++counts_[static_cast<std::size_t>(milliseconds)];
        else if (milliseconds > 0)
            take_long(milliseconds);
    }

    [[nodiscard]] std::uint64_t gaps() const;
    [[nodiscard]] std::int64_t longest_ms() const;
    /// The shortest interval that is a gap. Nothing when there are too few to say what is usual.
    [[nodiscard]] std::optional<std::int64_t> shortest_gap_ms() const;

private:
    // Each length below 64 ms is counted by itself, longer ones in 32 steps from each power of two
    // to the next.
    static constexpr int exact_bits = 6;
    static constexpr std::int64_t exact = 1 << exact_bits;
    static constexpr std::int64_t steps = exact / 2;

    void take_long(std::int64_t milliseconds);
    [[nodiscard]] static std::size_t step_of(std::int64_t interval);
    [[nodiscard]] static std::int64_t begin_of(std::size_t step);

    std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(exact); ///< by step
    std::int64_t longest_ms_ = 0; ///< of those without a count of their own
};

/// The statistics of a quantity. What is no finite number counts apart.
class Statistics
{
public:
    void take(std::int64_t time_ms, double value);

    [[nodiscard]] std::uint64_t count() const { return count_; }
    [[nodiscard]] std::uint64_t not_finite() const { return not_finite_; }
    /// Not finite, as the next two, where the values are too large to be squared and summed up.
    [[nodiscard]] double mean() const;
    /// The standard deviation of the samples; 0 of a single one.
    [[nodiscard]] double deviation() const;
    [[nodiscard]] double smallest() const { return smallest_; }
    [[nodiscard]] double largest() const { return largest_; }
    /// The slope of the straight line that fits best; nothing when all have the same time.
    [[nodiscard]] std::optional<double> drift_per_hour() const;
    [[nodiscard]] const Intervals& intervals() const { return intervals_; }

private:
    std::uint64_t count_ = 0, not_finite_ = 0;
    double first_ = 0.0; ///< what the sums count from: they lose no digits to a large mean
    std::int64_t first_ms_ = 0, last_ms_ = 0;
    double smallest_ = 0.0, largest_ = 0.0;
    double sum_ = 0.0, sum_of_squares_ = 0.0;
    double time_sum_ = 0.0, time_sum_of_squares_ = 0.0, product_sum_ = 0.0;
    Intervals intervals_;
};

inline void Statistics::take(std::int64_t time_ms, double value)
{
    if (!std::isfinite(value)) {
        ++not_finite_;
        return;
    }
    if (count_ == 0) {
        first_ = smallest_ = largest_ = value;
        first_ms_ = time_ms;
    } else {
        intervals_.take(time_ms - last_ms_);
    }
    last_ms_ = time_ms;
    ++count_;
    smallest_ = std::min(smallest_, value);
    largest_ = std::max(largest_, value);
    const double more = value - first_;
    const double time = static_cast<double>(time_ms - first_ms_);
    sum_ += more;
    sum_of_squares_ += more * more;
    time_sum_ += time;
    time_sum_of_squares_ += time * time;
    product_sum_ += time * more;
}

/// All of a recording.
struct LogStatistics {
    std::vector<Statistics> quantities;     ///< one for each column
    std::int64_t first_ms = 0, last_ms = 0; ///< of all rows; both 0 without any
    std::uint64_t rows = 0;
};

/// Reads all rows; those outside of the times do not count.
[[nodiscard]] LogStatistics read_statistics(LogReader& reader, std::int64_t from_ms = INT64_MIN,
                                            std::int64_t to_ms = INT64_MAX);

} // namespace companion
