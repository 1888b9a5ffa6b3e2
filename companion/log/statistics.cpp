#include "companion/log/statistics.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace companion
{

std::size_t Intervals::step_of(std::int64_t interval)
{
    if (interval < exact)
        return static_cast<std::size_t>(interval);
    const int shift =
        static_cast<int>(std::bit_width(static_cast<std::uint64_t>(interval))) - exact_bits;
    return static_cast<std::size_t>(shift * steps + (interval >> shift));
}

/// The shortest interval of a step.
std::int64_t Intervals::begin_of(std::size_t step)
{
    const auto index = static_cast<std::int64_t>(step);
    if (index < exact)
        return index;
    const auto shift = index / steps - 1;
    return (index - shift * steps) << shift;
}

void Intervals::take_long(std::int64_t milliseconds)
{
    const std::size_t step = step_of(milliseconds);
    if (step >= counts_.size())
        counts_.resize(step + 1);
    ++counts_[step];
    longest_ms_ = std::max(longest_ms_, milliseconds);
}

std::int64_t Intervals::longest_ms() const
{
    const auto last = std::find_if(counts_.rbegin(), counts_.rend(),
                                   [](std::uint64_t count) { return count != 0; });
    return std::max<std::int64_t>(longest_ms_, counts_.rend() - last - 1);
}

std::optional<std::int64_t> Intervals::shortest_gap_ms() const
{
    constexpr std::uint64_t fewest = 3;
    constexpr std::int64_t times_the_usual = 5;
    const std::uint64_t all = std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
    if (all < fewest)
        return std::nullopt;
    std::uint64_t shorter = 0;
    std::size_t step = 0;
    while ((shorter += counts_[step]) * 3 < all * 2)
        ++step;
    const std::int64_t usual = std::max<std::int64_t>(begin_of(step), 1);
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
