#include "companion/log/reader.h"

#include "companion/log/numbers.h"
#include "companion/text.h"
#include "instrument/recordings.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>

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

/// A number without an exponent as it is written: its digits, and how many of them stand behind the
/// point.
struct PlainNumber {
    static constexpr std::array powers_of_ten = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
    static constexpr std::ptrdiff_t most_digits = 15;
    static constexpr std::ptrdiff_t most_decimals = std::ssize(powers_of_ten) - 1;

    const char* end = nullptr; ///< behind it; null = it is none, or has more digits than that
    std::int64_t digits = 0;
    std::size_t decimals = 0;
    bool is_negative = false;

    /// Both numbers of the division are exact, so the result is the one nearest to the text.
    [[nodiscard]] double value() const
    {
        const double magnitude = static_cast<double>(digits) / powers_of_ten[decimals];
        return is_negative ? -magnitude : magnitude;
    }
};

/// Takes the decimals at the begin of a text off its first eight characters; more than seven are
/// too many. All at once: most of what a recording holds is decimals.
std::ptrdiff_t take_decimals(const char* text, std::uint64_t& value)
{
    std::uint64_t bytes = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&bytes, text, sizeof bytes);
    } else {
        for (std::size_t i = 0; i < sizeof bytes; ++i)
            bytes |= std::uint64_t{static_cast<unsigned char>(text[i])} << (8 * i);
    }
    bytes ^= 0x3030'3030'3030'3030; // a digit is its value now, everything else is more than 9
    const std::uint64_t others = ((bytes + 0x7676'7676'7676'7676) | bytes) & 0x8080'8080'8080'8080;
    const std::ptrdiff_t count = std::countr_zero(others) / 8;
    if (count > PlainNumber::most_decimals)
        return count;
    bytes = bytes << 8 << (56 - 8 * count);                            // zeros in front of them
    bytes = (bytes * (1 + (10 << 8)) >> 8) & 0x00FF'00FF'00FF'00FF;    // pairs
    bytes = (bytes * (1 + (100 << 16)) >> 16) & 0x0000'FFFF'0000'FFFF; // fours
    value = bytes * (1 + (10'000ULL << 32)) >> 32;
    return count;
}

/// The number that begins here. Behind what ends it, eight more characters must be readable.
PlainNumber take_plain_number(const char* at)
{
    constexpr std::array<std::uint64_t, PlainNumber::powers_of_ten.size()> tens = {
        1, 10, 100, 1000, 10'000, 100'000, 1'000'000, 10'000'000};
    PlainNumber number;
    number.is_negative = *at == '-';
    at += number.is_negative ? 1 : 0;
    const char* const first = at;
    std::uint64_t digits = 0; // of too many something else
    for (; *at >= '0' && *at <= '9'; ++at)
        digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
    std::ptrdiff_t count = at - first, decimals = 0;
    if (*at == '.') {
        std::uint64_t fraction = 0;
        decimals = take_decimals(++at, fraction);
        if (decimals > PlainNumber::most_decimals)
            return {};
        digits = digits * tens[static_cast<std::size_t>(decimals)] + fraction;
        at += decimals;
        count += decimals;
    }
    if (count == 0 || count > PlainNumber::most_digits)
        return {};
    number.end = at;
    number.digits = static_cast<std::int64_t>(digits);
    number.decimals = static_cast<std::size_t>(decimals);
    return number;
}

/// The cell that begins here, and where it ends; null when it makes no sense.
inline const char* read_cell(const char* begin, const char* end, Cell& cell)
{
    if (begin == end || *begin == '\t') {
        cell.text = {};
        return begin;
    }
    const PlainNumber number = take_plain_number(begin);
    const char* at = number.end;
    cell.value = number.value();
    const bool is_whole = at != nullptr && (at == end || *at == '\t');
    if (!is_whole)
        at = std::find(begin, end, '\t');
    cell.text = {begin, static_cast<std::size_t>(at - begin)};
    return is_whole || parse_number(cell.text, cell.value) ? at : nullptr;
}

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
    case LineSource::Got::overlong:
        return refuse("this line is too long");
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
    const std::size_t columns = format_->columns.size() + 1; // the time's, too
    const char* const end = line.data() + line.size();
    const char* at = line.data();
    std::size_t count = 0;
    for (;; ++at) {
        at = read_cell(at, end, cells_[count]);
        if (at == nullptr)
            return false;
        if (++count == columns || at == end)
            break;
    }
    std::fill(cells_.begin() + static_cast<std::ptrdiff_t>(count),
              cells_.begin() + static_cast<std::ptrdiff_t>(columns), Cell{});
    const Cell& time = cells_[0];
    if (at != end || time.text.empty() || !(std::abs(time.value) < most_seconds))
        return false;
    row.time = time.text;
    row.time_ms = static_cast<std::int64_t>(std::floor(time.value * 1000 + 0.5));
    row.cells = {cells_.data() + 1, columns - 1};
    return true;
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
        case LineSource::Got::overlong:
            note_damage();
            continue;
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

bool LogReader::read_trailer_line(std::string_view line, TrailerTimes& times)
{
    const auto& counts = format_->counts;
    const std::size_t index = end_.counts.size();
    std::uint32_t count = 0;
    double number = 0.0;
    const std::size_t tab = std::min(line.find(":\t"), line.size());
    const std::string_view value = line.substr(std::min(tab + 2, line.size()));
    if (index < counts.size() && value_of(line, counts[index].label) &&
        std::from_chars(value.data(), value.data() + value.size(), count).ec == std::errc{}) {
        end_.counts.push_back(count);
        return true;
    }
    if (!parse_number(value, number) || !(std::abs(number) < most_seconds))
        return false;
    if (value_of(line, log_text::duration)) {
        times.has_duration = true;
        end_.duration_s = number;
    } else {
        times.has_rate |= value_of(line, log_text::polling_rate).has_value();
        times.has_response |= value_of(line, log_text::response_time).has_value();
    }
    return true;
}

void LogReader::read_trailer()
{
    TrailerTimes times; // not only the last one: a line may have been lost
    std::string_view line;
    LineSource::Got got = LineSource::Got::end;
    while ((got = lines_.next(line)) == LineSource::Got::line || got == LineSource::Got::overlong) {
        const bool is_overlong = got == LineSource::Got::overlong;
        // An editor may have left an empty one.
        if (is_overlong || (!line.empty() && !read_trailer_line(line, times)))
            note_damage();
    }
    if (got == LineSource::Got::torn)
        end_.torn_line = lines_.number();
    end_.has_trailer = times.has_duration && times.has_rate && times.has_response &&
                       end_.counts.size() == format_->counts.size() && end_.torn_line == 0;
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
