#include "companion/log/wall_clock.h"

#include "companion/log/numbers.h"
#include "companion/text.h"
#include "frame/text/format.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>

namespace companion
{

namespace
{

/// Takes a number of that many digits off.
bool take_digits(std::string_view& text, std::size_t digits, int& value)
{
    if (text.size() < digits)
        return false;
    const auto end = text.data() + digits;
    if (text.front() == '-' || std::from_chars(text.data(), end, value).ptr != end)
        return false;
    text.remove_prefix(digits);
    return true;
}

/// Takes "09:26", and ":53" behind it when that is there.
bool take_time(std::string_view& text, std::tm& local)
{
    if (!take_digits(text, 2, local.tm_hour) || !take(text, ":") ||
        !take_digits(text, 2, local.tm_min))
        return false;
    if (take(text, ":") && !take_digits(text, 2, local.tm_sec))
        return false;
    return local.tm_hour < 24 && local.tm_min < 60 && local.tm_sec <= 60;
}

bool is_date(const std::tm& local)
{
    using namespace std::chrono;
    return local.tm_year >= 1970 &&
           year_month_day{year{local.tm_year}, month{static_cast<unsigned>(local.tm_mon)},
                          day{static_cast<unsigned>(local.tm_mday)}}
               .ok();
}

/// Seconds since 1970 that a clock shows; its year and month count as they are written.
std::int64_t shown_seconds(const std::tm& local)
{
    using namespace std::chrono;
    const sys_days day = year{local.tm_year} / local.tm_mon / local.tm_mday;
    return day.time_since_epoch().count() * 86400LL + local.tm_hour * 3600LL + local.tm_min * 60LL +
           local.tm_sec;
}

/// Of a local time in the zone of this process. False for what the system does not know.
bool utc_seconds(std::tm local, std::int64_t& seconds)
{
    local.tm_year -= 1900;
    local.tm_mon -= 1;
    local.tm_isdst = -1;
    const std::time_t time = std::mktime(&local);
    seconds = time;
    return time != -1;
}

std::int64_t floor_of(std::int64_t value, std::int64_t divisor)
{
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

/// "+01:00" or "Z" at the end of a time.
bool take_offset(std::string_view& text, std::int64_t& seconds)
{
    seconds = 0;
    if (take(text, "Z"))
        return true;
    const bool is_west = text.starts_with('-');
    int hours = 0, minutes = 0;
    if ((!take(text, "+") && !take(text, "-")) || !take_digits(text, 2, hours))
        return false;
    (void)take(text, ":");
    if (!text.empty() && !take_digits(text, 2, minutes))
        return false;
    seconds = (hours * 3600LL + minutes * 60LL) * (is_west ? -1 : 1);
    return true;
}

} // namespace

bool WallClock::set(std::string_view text)
{
    std::tm local = {};
    const std::size_t day_name = text.find(", ");
    if (day_name == std::string_view::npos)
        return false;
    text.remove_prefix(day_name + 2);
    return take_digits(text, 2, local.tm_mon) && take(text, "/") &&
           take_digits(text, 2, local.tm_mday) && take(text, "/") &&
           take_digits(text, 4, local.tm_year) && take(text, ", ") && take_time(text, local) &&
           text.empty() && is_date(local) && utc_seconds(local, start_s_);
}

void WallClock::find_offset(std::int64_t seconds)
{
    if (seconds >= known_from_ && seconds < known_to_)
        return;
    constexpr std::int64_t quarter = 900; // no zone changes its offset in between
    known_from_ = floor_of(seconds, quarter) * quarter;
    known_to_ = known_from_ + quarter;
    const std::time_t time = seconds;
    if (const std::tm* local = std::localtime(&time)) {
        std::tm shown = *local;
        shown.tm_year += 1900;
        shown.tm_mon += 1;
        offset_s_ = shown_seconds(shown) - seconds;
    }
}

std::string WallClock::text_after(std::int64_t milliseconds)
{
    using namespace std::chrono;
    const std::int64_t seconds = start_s_ + floor_of(milliseconds, 1000);
    find_offset(seconds);
    const std::int64_t shown = seconds + offset_s_;
    const std::int64_t days = floor_of(shown, 86400);
    const year_month_day date{sys_days{std::chrono::days{days}}};
    const auto second = static_cast<int>(shown - days * 86400);
    const auto offset_min = static_cast<int>(std::abs(offset_s_) / 60);
    return formatted("%04d-%02u-%02uT%02d:%02d:%02d.%03d%c%02d:%02d", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     second / 3600, second / 60 % 60, second % 60,
                     static_cast<int>(milliseconds - floor_of(milliseconds, 1000) * 1000),
                     offset_s_ < 0 ? '-' : '+', offset_min / 60, offset_min % 60);
}

bool WallClock::read(std::string_view text, std::int64_t& milliseconds) const
{
    std::tm local = {};
    if (!take_digits(text, 4, local.tm_year) || !take(text, "-") ||
        !take_digits(text, 2, local.tm_mon) || !take(text, "-") ||
        !take_digits(text, 2, local.tm_mday) || (!take(text, "T") && !take(text, " ")) ||
        !take_time(text, local) || !is_date(local))
        return false;
    double fraction = 0.0;
    if (text.starts_with('.')) {
        const std::size_t length = std::min(text.find_first_not_of("0123456789", 1), text.size());
        if (!parse_number("0" + std::string{text.substr(0, length)}, fraction))
            return false;
        text.remove_prefix(length);
    }
    std::int64_t utc = 0, offset = 0;
    if (text.empty()) {
        if (!utc_seconds(local, utc))
            return false;
    } else if (take_offset(text, offset) && text.empty()) {
        utc = shown_seconds(local) - offset;
    } else {
        return false;
    }
    milliseconds = (utc - start_s_) * 1000 + std::llround(fraction * 1000);
    return true;
}

} // namespace companion
