#include "frame/text/format.h"
#include "tests/support/trial.h"

namespace
{

TEST(Format, NumbersThatAreTooLongForTheirColumns)
{
    constexpr NumberFormat volts = {.width = 8, .decimals = 3, .unit = "V", .sign = true};
    constexpr NumberFormat rate = {.width = 7, .decimals = 2};
    constexpr NumberFormat amperes = {
        .width = 10, .decimals = 3, .unit = "A", .sign = true, .exponent = true};
    const struct {
        double value;
        NumberFormat format;
        int columns;
        const char* text;
    } cases[] = {
        {24.0, volts, 9, " +24.000V"},      {-100.0, volts, 9, "-100.000V"},
        {-1000.0, volts, 9, "-1000.00V"},   {1e7, volts, 9, "+1.0e+07V"},
        {99999.994, rate, 8, "99999.99"},   {99999.996, rate, 8, "100000.0"},
        {1e8, rate, 8, "1.00e+08"},         {-1e300, volts, 8, "-1e+300V"},
        {-1e300, volts, 7, "-1e300V"},      {-1e300, volts, 6, "######"},
        {1e-9, amperes, 12, "+1.000e-09A"}, {-1e-300, amperes, 10, "-1.0e-300A"},
        {4e9, {}, 10, "4000000000"},        {4e9, {}, 6, "4e+09"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(number_text(c.value, c.format, c.columns), c.text);
}

TEST(Format, Bits)
{
    EXPECT_EQ(bits_text(0xA5, 8), "1010 0101b");
    EXPECT_EQ(bits_text(0x1F, 5), "1 1111b");
    EXPECT_EQ(bits_text(0xC100, 16), "1100 0001 0000 0000b");
    EXPECT_EQ(bits_text(0x1FF, 4), "1111b");
    EXPECT_EQ(bits_text(1, 0), "b");
}

TEST(Format, KeysAndEscapes)
{
    EXPECT_EQ(key_text(0), "    ");
    EXPECT_EQ(key_text('a'), "'a' ");
    EXPECT_EQ(key_text(' '), "020h");
    EXPECT_EQ(key_text(33), "'!' ");
    EXPECT_EQ(key_text(127), "'\x7F' ");
    EXPECT_EQ(key_text(0x148), "148h");
    EXPECT_EQ(escaped_byte(0), "\\0");
    EXPECT_EQ(escaped_byte(27), "\\e");
    EXPECT_EQ(escaped_byte(5), "\x05");
    EXPECT_EQ(escaped_byte(0x7F), "\x7F");
    EXPECT_EQ(printable("a\x1B[2J\r\n\x05\xC2\x9B"
                        "31m \xF8"
                        "C \xC3\xA9"),
              "a\\e[2J\\r\\n\\x05\\x9B31m \xF8"
              "C \xC3\xA9");
    EXPECT_EQ(printable(static_cast<const char*>(nullptr)), "");
}

TEST(Format, VersionsAndTimestamps)
{
    EXPECT_EQ(version_text(0x010A), "1-10");
    EXPECT_EQ(version_text(0x0A00), "10-00");
    const Trial trial;
    EXPECT_EQ(timestamp(), "2026/03/14, 09:26:53.589");
}

} // namespace
