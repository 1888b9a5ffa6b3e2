#include "companion/log/reader.h"

#include "companion/log/numbers.h"
#include "companion/text.h"
#include "instrument/recordings.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace companion
{

namespace
{

/// What stands behind "label:<tab>"; nothing when the line does not begin so.
std::optional<std::string_view> value_of(std::string_view line, std::string_view label)
{
    if (take(line, label) && take(line, ":\t"))
        return line;
    return std::nullopt;
}

constexpr double most_seconds = 1e9; // some decades

std::string column_line(const MeasurementFormat& format)
{
    std::string line = log_text::time;
    for (const auto& [name, unit] : format.columns)
        line += std::string{'\t'} + name + '/' + unit;
    return line;
}

} // namespace

std::string quantity_name(const RecordedColumn& column)
{
    return utf8(column.name);
}

std::string quantity_unit(const RecordedColumn& column)
{
    return utf8(column.unit);
}

bool LogReader::open(const std::string& name, const Surroundings& outside)
{
    name_ = name;
    outside_ = &outside;
    return lines_.open(name, outside) && read_heading();
}

bool LogReader::refuse(const char* why) const
{
    if (lines_.is_good())
        outside_->complain(valid_utf8(name_) + ':' + std::to_string(lines_.number()) +
                           ": this is no recording: " + why);
    return false;
}

/// The next line of the heading. False, with a message, when the file ends there.
bool LogReader::heading_line(std::string_view& line)
{
    switch (lines_.next(line)) {
    case LineSource::Got::line:
        return true;
    case LineSource::Got::torn:
        return refuse("it ends within this line");
    case LineSource::Got::end:
        break;
    }
    return refuse(lines_.number() == 0 ? "it is empty" : "it ends behind this line");
}

bool LogReader::read_heading()
{
    std::string_view line;
    if (!heading_line(line))
        return false;
    for (const MeasurementFormat* format : recording::formats) {
        if (const auto module = value_of(line, format->what)) {
            format_ = format;
            module_ = utf8(*module);
        }
    }
    if (format_ == nullptr)
        return refuse("it does not begin as one");
    if (!heading_line(line))
        return false;
    const auto started = value_of(line, log_text::started);
    if (!started || !clock_.set(*started))
        return refuse("the time of its begin is missing");
    if (!heading_line(line))
        return false;
    if (!line.empty())
        return refuse("an empty line is missing");
    if (!heading_line(line))
        return false;
    return line == column_line(*format_) || refuse("the columns are others");
}

void LogReader::rewind()
{
    lines_.rewind();
    end_ = {};
    std::string_view line;
    for (int heading_lines = 4; heading_lines > 0; --heading_lines)
        (void)lines_.next(line);
}

bool LogReader::read_row(std::string_view line, Row& row)
{
    const std::size_t columns = format_->columns.size();
    const char* const end = line.data() + line.size();
    const char* at = std::find(line.data(), end, '\t');
    row.time = {line.data(), static_cast<std::size_t>(at - line.data())};
    double seconds = 0.0;
    if (!parse_number(row.time, seconds) || !(std::abs(seconds) < most_seconds))
        return false;
    row.time_ms = static_cast<std::int64_t>(std::floor(seconds * 1000 + 0.5));
    std::size_t count = 0;
    for (; at != end && count < columns; ++count) {
        const char* const begin = at + 1;
        Cell& cell = cells_[count];
        at = begin;
        if (begin != end && *begin != '\t')
            at += take_plain_number({begin, static_cast<std::size_t>(end - begin)}, cell.value);
        const bool is_plain = at == end || *at == '\t';
        at = is_plain ? at : std::find(at, end, '\t');
        cell.text = {begin, static_cast<std::size_t>(at - begin)};
        if (!is_plain && !parse_number(cell.text, cell.value))
            return false;
    }
    std::fill(cells_.begin() + static_cast<std::ptrdiff_t>(count),
              cells_.begin() + static_cast<std::ptrdiff_t>(columns), Cell{});
    row.cells = {cells_.data(), columns};
    return at == end;
}

void LogReader::note_damage()
{
    if (end_.damaged_lines++ == 0)
        end_.damaged_line = lines_.number();
}

bool LogReader::next(Row& row)
{
    std::string_view line;
    for (;;) {
        switch (lines_.next(line)) {
        case LineSource::Got::end:
            return false;
        case LineSource::Got::torn:
            end_.torn_line = lines_.number();
            return false;
        case LineSource::Got::line:
            break;
        }
        if (line.empty())
            continue; // one stands in front of the trailer
        if (line == log_text::stopped) {
            read_trailer();
            return false;
        }
        if (read_row(line, row))
            return true;
        note_damage();
    }
}

void LogReader::read_trailer()
{
    const auto& counts = format_->counts;
    bool has_times[3] = {}; // not only the last one: a line may have been lost
    std::string_view line;
    LineSource::Got got = LineSource::Got::end;
    while ((got = lines_.next(line)) == LineSource::Got::line) {
        const std::size_t index = end_.counts.size();
        std::uint32_t count = 0;
        double number = 0.0;
        const std::size_t tab = std::min(line.find(":\t"), line.size());
        const std::string_view value = line.substr(std::min(tab + 2, line.size()));
        if (index < counts.size() && value_of(line, counts[index].label) &&
            std::from_chars(value.data(), value.data() + value.size(), count).ec == std::errc{}) {
            end_.counts.push_back(count);
        } else if (!parse_number(value, number) || !(std::abs(number) < most_seconds)) {
            note_damage();
        } else if (value_of(line, log_text::duration)) {
            has_times[0] = true;
            end_.duration_s = number;
        } else {
            has_times[1] |= value_of(line, log_text::polling_rate).has_value();
            has_times[2] |= value_of(line, log_text::response_time).has_value();
        }
    }
    if (got == LineSource::Got::torn)
        end_.torn_line = lines_.number();
    end_.has_trailer = has_times[0] && has_times[1] && has_times[2] &&
                       end_.counts.size() == counts.size() && end_.torn_line == 0;
}

bool LogReader::tell_flaws() const
{
    const auto tell = [&](std::int64_t line, const std::string& what) {
        outside_->complain(valid_utf8(name_) + ':' + std::to_string(line) + ": " + what);
    };
    if (end_.damaged_lines == 1)
        tell(end_.damaged_line, "this line makes no sense and is left out");
    else if (end_.damaged_lines > 1)
        tell(end_.damaged_line, "this line makes no sense; it and " +
                                    std::to_string(end_.damaged_lines - 1) +
                                    " more such are left out");
    if (end_.torn_line != 0)
        tell(end_.torn_line, "the last line is torn and left out");
    return end_.damaged_lines == 0 && lines_.is_good();
}

} // namespace companion
