#include "companion/log/thinning.h"

#include <algorithm>
#include <cmath>

namespace companion
{

Thinning::Thinning(const Request& request) : request_{request}
{
    if (request.samples > 2 * request.columns)
        columns_.resize(request.columns);
    else
        samples_.reserve(request.samples);
}

void Thinning::take(std::int64_t time_ms, double value)
{
    if (time_ms < request_.first_ms || time_ms > request_.last_ms)
        return;
    if (!std::isfinite(value)) {
        was_broken_ = true;
        return;
    }
    const bool is_late = previous_ms_ && request_.shortest_gap_ms &&
                         time_ms - *previous_ms_ >= *request_.shortest_gap_ms;
    const Sample sample = {time_ms, value, previous_ms_ && (is_late || was_broken_)};
    previous_ms_ = time_ms;
    was_broken_ = false;
    if (columns_.empty()) {
        samples_.push_back(sample);
        return;
    }
    const double span = static_cast<double>(request_.last_ms - request_.first_ms) + 1.0;
    const double part = static_cast<double>(time_ms - request_.first_ms) / span;
    Column& column =
        columns_[static_cast<std::size_t>(part * static_cast<double>(columns_.size()))];
    if (column.is_empty) {
        column = {sample, sample, false, sample.is_behind_gap};
    } else if (sample.value < column.smallest.value) {
        column.smallest = sample;
    } else if (sample.value > column.largest.value) {
        column.largest = sample;
    }
}

std::vector<Point> Thinning::points() const
{
    std::vector<Sample> kept = samples_;
    for (const Column& column : columns_) {
        if (column.is_empty)
            continue;
        const bool falls = column.smallest.time_ms > column.largest.time_ms;
        kept.push_back(falls ? column.largest : column.smallest);
        kept.back().is_behind_gap = column.begins_behind_gap;
        if (column.smallest.value != column.largest.value) { // they may have the same time
            kept.push_back(falls ? column.smallest : column.largest);
            kept.back().is_behind_gap = false;
        }
    }
    std::stable_sort(kept.begin(), kept.end(),
                     [](const Sample& a, const Sample& b) { return a.time_ms < b.time_ms; });
    std::vector<Point> points;
    for (const Sample& sample : kept) {
        const double x = static_cast<double>(sample.time_ms) / 1000;
        if (sample.is_behind_gap && !points.empty())
            points.push_back({(points.back().x + x) / 2, NAN});
        points.push_back({x, sample.value});
    }
    return points;
}

} // namespace companion
