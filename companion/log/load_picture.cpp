#include "companion/log/load_picture.h"

#include "companion/log/numbers.h"
#include "companion/log/statistics.h"
#include "companion/text.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace companion
{

namespace
{

struct TimeRange {
    std::int64_t first_ms = INT64_MIN, last_ms = INT64_MAX;
};

/// A recording with what was asked of it.
struct Recording {
    LogReader reader;
    TimeRange range; ///< that was asked for
    LogStatistics statistics;
    std::vector<std::size_t> columns;
};

/// Seconds since the start, or a date. Empty leaves the limit as it is.
bool read_limit(const std::string& text, const WallClock& clock, std::int64_t& limit_ms)
{
    if (text.empty())
        return true;
    double seconds = 0.0;
    constexpr double most = 1e9;
    if (!parse_number(text, seconds))
        return clock.read(text, limit_ms);
    limit_ms = std::llround(std::clamp(seconds, -most, most) * 1000);
    return !std::isnan(seconds);
}

bool open_recording(const PictureRequest& request, const std::string& file,
                    const Surroundings& outside, Recording& recording)
{
    LogReader& reader = recording.reader;
    if (!reader.open(file, outside))
        return false;
    if (!read_limit(request.from, reader.clock(), recording.range.first_ms) ||
        !read_limit(request.to, reader.clock(), recording.range.last_ms)) {
        outside.complain("a time is in seconds since the start, or as 2026-03-14T09:26:53");
        return false;
    }
    for (std::size_t i = 0; i < reader.format().columns.size(); ++i) {
        if (request.wants(quantity_name(reader.format().columns[i])))
            recording.columns.push_back(i);
    }
    recording.statistics =
        read_statistics(reader, recording.range.first_ms, recording.range.last_ms);
    return true;
}

/// Of all files.
std::vector<std::string> quantity_names(const std::vector<std::unique_ptr<Recording>>& recordings)
{
    std::vector<std::string> names;
    for (const auto& recording : recordings) {
        for (const RecordedColumn& column : recording->reader.format().columns)
            names.push_back(quantity_name(column));
    }
    return names;
}

/// Reads once more and keeps what can be seen. True when that is less than all.
bool take_curves(Recording& recording, std::size_t file, std::size_t columns, Picture& picture)
{
    bool is_thinned = false;
    std::vector<Thinning> thinnings;
    for (const std::size_t column : recording.columns) {
        const Statistics& statistics = recording.statistics.quantities[column];
        thinnings.emplace_back(Thinning::Request{
            .first_ms =
                std::max<std::int64_t>(recording.range.first_ms, std::llround(picture.low * 1000)),
            .last_ms =
                std::min<std::int64_t>(recording.range.last_ms, std::llround(picture.high * 1000)),
            .samples = statistics.count(),
            .columns = columns,
            .shortest_gap_ms = statistics.intervals().shortest_gap_ms()});
    }
    recording.reader.rewind();
    Row row;
    while (recording.reader.next(row)) {
        for (std::size_t i = 0; i < thinnings.size(); ++i) {
            const Cell& cell = row.cells[recording.columns[i]];
            if (!cell.text.empty())
                thinnings[i].take(row.time_ms, cell.value);
        }
    }
    for (std::size_t i = 0; i < thinnings.size(); ++i) {
        const RecordedColumn& column = recording.reader.format().columns[recording.columns[i]];
        is_thinned |= thinnings[i].is_thinned();
        if (recording.statistics.quantities[recording.columns[i]].count() > 0)
            picture.curves.push_back(
                {file, quantity_name(column), quantity_unit(column), thinnings[i].points()});
    }
    return is_thinned;
}

/// Sets the common axis. False without any row.
bool find_range(const std::vector<std::unique_ptr<Recording>>& recordings, Picture& picture)
{
    picture.low = INFINITY;
    picture.high = -INFINITY;
    for (const auto& recording : recordings) {
        if (recording->statistics.rows == 0)
            continue;
        picture.low =
            std::min(picture.low, static_cast<double>(recording->statistics.first_ms) / 1000);
        picture.high =
            std::max(picture.high, static_cast<double>(recording->statistics.last_ms) / 1000);
    }
    if (!(picture.low <= picture.high))
        return false;
    if (picture.low == picture.high)
        picture.high += 1.0;
    return true;
}

} // namespace

bool PictureRequest::wants(const std::string& name) const
{
    return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
}

bool PictureRequest::finds_all(const std::vector<std::string>& known,
                               const Surroundings& outside) const
{
    const auto unknown = std::find_if(only.begin(), only.end(), [&](const std::string& name) {
        return std::find(known.begin(), known.end(), name) == known.end();
    });
    if (unknown == only.end())
        return true;
    std::string list;
    for (auto name = known.begin(); name != known.end(); ++name) {
        if (std::find(known.begin(), name, *name) == name) // several files may have it
            list += (list.empty() ? "" : ", ") + *name;
    }
    outside.complain("there is no quantity " + valid_utf8(*unknown) + "; there are " + list);
    return false;
}

int load_recordings(const PictureRequest& request, const Surroundings& outside, Drawing& drawing)
{
    std::vector<std::unique_ptr<Recording>> recordings;
    std::size_t curves = 0;
    for (const std::string& file : request.files) {
        recordings.push_back(std::make_unique<Recording>());
        if (!open_recording(request, file, outside, *recordings.back()))
            return wrong_usage;
        for (const std::size_t column : recordings.back()->columns)
            curves += recordings.back()->statistics.quantities[column].count() > 0 ? 1U : 0U;
    }
    if (!request.finds_all(quantity_names(recordings), outside))
        return wrong_usage;
    Picture picture{.x_name = "time since the start", .x_unit = "s", .is_over_time = true};
    if (!find_range(recordings, picture) || curves == 0) {
        outside.complain("there is nothing to draw");
        return wrong_usage;
    }
    const std::size_t columns = request.most_points > 0
                                    ? std::max<std::size_t>(request.most_points / curves / 2, 1)
                                    : request.columns;
    int status = 0;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        LogReader& reader = recordings[i]->reader;
        const std::string start = reader.clock().text_after(0);
        drawing.sources.push_back(
            {valid_utf8(reader.name()),
             std::string{reader.format().what} + ' ' + reader.module() + ", since " + start,
             start});
        drawing.is_thinned |= take_curves(*recordings[i], i, columns, picture);
        if (!reader.tell_flaws())
            status = not_whole;
    }
    drawing.pictures.push_back(std::move(picture));
    return status;
}

} // namespace companion
