#include "instrument/words.h"

#include "frame/text/format.h"

ColoredText active_or_off(bool active)
{
    return active ? ColoredText{"active", Color::good} : ColoredText{"off   ", Color::disabled};
}

ColoredText ok_fail_or_disabled(bool enabled, bool good)
{
    if (!enabled)
        return {"dis.", Color::disabled};
    return ok_or_fail(good);
}

const char* led_color_name(bool red, bool green, bool blue)
{
    static constexpr const char* names[] = {"Black", "Red",  "Green", "Yellow",
                                            "Blue",  "Pink", "Cyan",  "White"};
    return names[(red ? 1u : 0u) + (green ? 2u : 0u) + (blue ? 4u : 0u)];
}

std::string manufacturing_date_text(unsigned year, unsigned week)
{
    return formatted("CW%02u %u", week, year);
}

std::string uptime_text(std::uint32_t seconds, unsigned milliseconds)
{
    const unsigned hours = seconds / 3600;
    const unsigned minutes = seconds % 3600 / 60;
    const unsigned rest = seconds % 60;
    const unsigned hundredths = milliseconds / 10;
    if (hours != 0)
        return formatted("%u:%02u:%02u.%02u sec.", hours, minutes, rest, hundredths);
    if (minutes != 0)
        return formatted("%u:%02u.%02u sec.", minutes, rest, hundredths);
    return formatted("%u.%02u sec.", rest, hundredths);
}
