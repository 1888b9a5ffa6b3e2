#include "instrument/supplies.h"
#include "instrument/words.h"
#include "tests/support/trial.h"

#include <limits>

namespace
{

TEST(Supplies, ColoursByDeviationAndRange)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double no_number = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double value, nominal, tolerance;
        Color color;
    } cases[] = {
        {24.48, 24.0, 2.0, Color::value},      {24.4801, 24.0, 2.0, Color::above},
        {23.52, 24.0, 2.0, Color::value},      {23.5199, 24.0, 2.0, Color::below},
        {-23.2, -22.0, 5.0, Color::above}, // further from 0 than it should be
        {-20.8, -22.0, 5.0, Color::below},     {5.0, 0.0, 1.0, Color::value},
        {infinity, 24.0, 2.0, Color::above},   {-infinity, 24.0, 2.0, Color::below},
        {-infinity, -22.0, 5.0, Color::above}, {no_number, 24.0, 2.0, Color::value},
    };
    for (const auto& c : cases)
        EXPECT_EQ(deviation_color(c.value, c.nominal, c.tolerance), c.color) << c.value;
    EXPECT_EQ(range_color(infinity, 10.0, 40.0), Color::above);
    EXPECT_EQ(range_color(-infinity, 10.0, 40.0), Color::below);
    EXPECT_EQ(range_color(no_number, 10.0, 40.0), Color::value);
}

TEST(InstrumentWords, OfStates)
{
    EXPECT_STREQ(active_or_off(false).text, "off   ");
    EXPECT_EQ(active_or_off(false).color, Color::disabled);
    EXPECT_EQ(ok_fail_or_disabled(true, false).color, Color::bad);
    EXPECT_STREQ(led_color_name(true, false, true), "Pink");
    EXPECT_STREQ(led_color_name(false, true, true), "Cyan");
}

TEST(InstrumentWords, Uptimes)
{
    EXPECT_EQ(uptime_text(59, 990), "59.99 sec.");
    EXPECT_EQ(uptime_text(59, 999), "59.99 sec."); // cut, not rounded
    EXPECT_EQ(uptime_text(61, 5), "1:01.00 sec.");
    EXPECT_EQ(uptime_text(3600, 0), "1:00:00.00 sec.");
    EXPECT_EQ(uptime_text(360000, 0), "100:00:00.00 sec.");
}

} // namespace
