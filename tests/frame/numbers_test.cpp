#include "frame/numbers.h"

#include <limits>
#include <optional>

#include <gtest/gtest.h>

namespace
{

constexpr auto largest = std::numeric_limits<std::uint32_t>::max();

struct IntegerCase {
    const char* text;
    NumberResult result;
    std::uint32_t as_unsigned;
    std::int32_t as_signed;
};

constexpr IntegerCase integer_cases[] = {
    {"0", NumberResult::read, 0, 0},
    {"31", NumberResult::read, 31, 31},
    {"1Fh", NumberResult::read, 31, 31},
    {"0x1fh", NumberResult::read, 31, 31},
    {"0Bh", NumberResult::read, 11, 11},
    {"101b", NumberResult::read, 5, 5},
    {"bh", NumberResult::read, 11, 11},
    {"+2", NumberResult::read, 2, 2},
    {" 2", NumberResult::read, 2, 2},
    {"-5", NumberResult::read, 4294967291u, -5},
    // Never cut down to something that happens to be a slot's number.
    {"4294967297", NumberResult::read, largest, std::numeric_limits<std::int32_t>::max()},
    {"99999999999999999999999", NumberResult::read, largest,
     std::numeric_limits<std::int32_t>::max()},
    {"-2147483649", NumberResult::read, 2147483647u, std::numeric_limits<std::int32_t>::min()},
    {"", NumberResult::empty, 0, 0},
    {"h", NumberResult::no_number, 0, 0},
    {"-", NumberResult::no_number, 0, 0},
    {"0xh", NumberResult::no_number, 0, 0},
    {"0b1b", NumberResult::no_number, 0, 0},
    {"12b", NumberResult::no_number, 0, 0},
    {"12x", NumberResult::no_number, 0, 0},
    {"1FH", NumberResult::no_number, 0, 0},
    {"0x10", NumberResult::no_number, 0, 0},
    {"2 ", NumberResult::no_number, 0, 0},
};

TEST(Numbers, IntegersInThreeNotations)
{
    for (const IntegerCase& expected : integer_cases) {
        SCOPED_TRACE(expected.text);
        std::uint32_t unsigned_value = 0;
        std::int32_t signed_value = 0;
        EXPECT_EQ(read_unsigned(expected.text, unsigned_value), expected.result);
        EXPECT_EQ(unsigned_value, expected.as_unsigned);
        EXPECT_EQ(read_signed(expected.text, signed_value), expected.result);
        EXPECT_EQ(signed_value, expected.as_signed);
    }
}

TEST(Numbers, Addresses)
{
    constexpr struct {
        const char* text;
        int address;
    } cases[] = {
        {"0", 0}, {"3", 3},   {"3h", 3},  {"11b", 3},         {"_", 128}, {"*", 255}, {"4", -1},
        {"", -1}, {"_1", -1}, {"**", -1}, {"4294967297", -1}, {"-1", -1}, {"x", -1},
    };
    for (const auto& expected : cases)
        EXPECT_EQ(read_address(expected.text), expected.address) << expected.text;
}

TEST(Numbers, RealsIgnoreWhatFollowsThem)
{
    constexpr struct {
        const char* text;
        std::optional<double> value;
    } cases[] = {
        {"35abc", 35.0},       {"-1", -1.0},
        {" 2.5e1", 25.0},      {"", std::nullopt},
        {"abc", std::nullopt}, {"nan", std::nullopt},
        {"inf", std::nullopt}, {"1e999", std::nullopt},
    };
    for (const auto& expected : cases) {
        double value = 7.0;
        EXPECT_EQ(read_real(expected.text, value), expected.value.has_value()) << expected.text;
        EXPECT_EQ(value, expected.value.value_or(7.0)) << expected.text;
    }
}

TEST(Numbers, PortNumbersKeepTheirLow16Bits)
{
    constexpr struct {
        const char* text;
        std::optional<std::uint16_t> value;
    } cases[] = {
        {"3", 3},
        {"3x", 3},
        {"10h", 10},
        {"-1", 65535},
        {"65539", 3},
        {"281474976710659", 3},
        {"h", std::nullopt},
    };
    for (const auto& expected : cases) {
        std::uint16_t value = 9;
        EXPECT_EQ(read_port_number(expected.text, value), expected.value.has_value())
            << expected.text;
        EXPECT_EQ(value, expected.value.value_or(9)) << expected.text;
    }
}

} // namespace
