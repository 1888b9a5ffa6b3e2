#include "companion/log/statistics.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace companion
{

namespace
{

// Intervals are counted by their length: each one below 64 ms by itself, longer ones in 32 steps
// from each power of two to the next.
constexpr int exact_bits = 6;
constexpr std::int64_t exact = 1 << exact_bits;
constexpr int steps_bits = exact_bits - 1;
constexpr std::int64_t steps = 1 << steps_bits;

std::size_t step_of(std::int64_t interval)
{
    if (interval < exact)
        return static_cast<std::size_t>(interval);
    const int shift =
        static_cast<int>(std::bit_width(static_cast<std::uint64_t>(interval))) - exact_bits;
    return static_cast<std::size_t>(shift * steps + (interval >> shift));
}

/// The shortest interval of a step.
std::int64_t begin_of(std::size_t step)
{
    const auto index = static_cast<std::int64_t>(step);
    if (index < exact)
        return index;
    const auto shift = index / steps - 1;
    return (index - shift * steps) << shift;
}

} // namespace

void Intervals::take(std::int64_t milliseconds)
{
    if (milliseconds < 0)
        return;
    const std::size_t step = step_of(milliseconds);
    if (step >= counts_.size())
        counts_.resize(step + 1);
    ++counts_[step];
    ++count_;
    longest_ms_ = std::max(longest_ms_, milliseconds);
}

std::optional<std::int64_t> Intervals::shortest_gap_ms() const
{
    constexpr std::uint64_t fewest = 3;
    constexpr std::int64_t times_the_usual = 5;
    if (count_ < fewest)
        return std::nullopt;
    std::uint64_t before = 0;
    std::size_t median = 0;
    while ((before += counts_[median]) * 2 < count_)
        ++median;
    const std::int64_t usual = std::max<std::int64_t>(begin_of(median), 1);
    return begin_of(step_of(usual * times_the_usual) + 1);
}

std::uint64_t Intervals::gaps() const
{
    const std::optional<std::int64_t> shortest = shortest_gap_ms();
    std::uint64_t gaps = 0;
    for (std::size_t step = shortest ? step_of(*shortest) : counts_.size(); step < counts_.size();
         ++step)
        gaps += counts_[step];
    return gaps;
}

void Statistics::take(std::int64_t time_ms, double value)
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

double Statistics::mean() const
{
    return first_ + sum_ / static_cast<double>(count_);
}

double Statistics::deviation() const
{
    if (count_ < 2)
        return 0.0;
    const auto count = static_cast<double>(count_);
    const double squares = sum_of_squares_ - sum_ * sum_ / count;
    return std::sqrt(std::max(squares, 0.0) / (count - 1));
}

std::optional<double> Statistics::drift_per_hour() const
{
    const auto count = static_cast<double>(count_);
    const double time_squares = time_sum_of_squares_ - time_sum_ * time_sum_ / count;
    if (count_ < 2 || !(time_squares > 0))
        return std::nullopt;
    constexpr double ms_per_hour = 3.6e6;
    return (product_sum_ - time_sum_ * sum_ / count) / time_squares * ms_per_hour;
}

LogStatistics read_statistics(LogReader& reader, std::int64_t from_ms, std::int64_t to_ms)
{
    LogStatistics all;
    const std::size_t columns = reader.format().columns.size();
    all.quantities.resize(columns);
    Row row;
    while (reader.next(row)) {
        if (row.time_ms < from_ms || row.time_ms > to_ms)
            continue;
        if (all.rows++ == 0)
            all.first_ms = all.last_ms = row.time_ms;
        all.first_ms = std::min(all.first_ms, row.time_ms);
        all.last_ms = std::max(all.last_ms, row.time_ms);
        for (std::size_t i = 0; i < columns; ++i) {
            if (!row.cells[i].text.empty())
                all.quantities[i].take(row.time_ms, row.cells[i].value);
        }
    }
    return all;
}

} // namespace companion
