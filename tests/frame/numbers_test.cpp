#include "frame/numbers.h"

#include <limits>
#include <optional>

#include <gtest/gtest.h>

namespace
{

constexpr auto largest = std::numeric_limits<std::uint32_t>::max();

TEST(Numbers, IntegersInThreeNotations)
{
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    const struct {
        const char* text;
        std::uint32_t as_unsigned;
        std::int32_t as_signed;
    } numbers[] = {
        {"0", 0, 0},
        {"31", 31, 31},
        {"1Fh", 31, 31},
        {"0x1fh", 31, 31},
        {"0Bh", 11, 11},
        {"101b", 5, 5},
        {"bh", 11, 11},
        {"+2", 2, 2},
        {" 2", 2, 2},
        {"-5", 0U - 5, -5},
        // Never cut down to something that happens to be a slot's number.
        {"4294967297", largest, highest},
        {"99999999999999999999999", largest, highest},
        {"-2147483649", 2147483647U, lowest},
    };
    for (const auto& expected : numbers) {
        SCOPED_TRACE(expected.text);
        std::uint32_t unsigned_value = 0;
        std::int32_t signed_value = 0;
        EXPECT_EQ(read_unsigned(expected.text, unsigned_value), NumberResult::read);
        EXPECT_EQ(unsigned_value, expected.as_unsigned);
        EXPECT_EQ(read_signed(expected.text, signed_value), NumberResult::read);
        EXPECT_EQ(signed_value, expected.as_signed);
    }
    std::uint32_t none = 0;
    EXPECT_EQ(read_unsigned("", none), NumberResult::empty);
    for (const char* text : {"h", "-", "0xh", "0b1b", "12b", "12x", "1FH", "0x10", "2 "})
        EXPECT_EQ(read_unsigned(text, none), NumberResult::no_number) << text;
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
    for (const auto& [text, number] : {std::pair{"3", 3},
                                       {"3x", 3},
                                       {"10h", 10},
                                       {"-1", 65535},
                                       {"65539", 3},
                                       {"281474976710659", 3},
                                       {"h", -1}}) {
        std::uint16_t value = 9;
        EXPECT_EQ(read_port_number(text, value), number >= 0) << text;
        EXPECT_EQ(value, number >= 0 ? number : 9) << text;
    }
}

} // namespace
