#include "frame/numbers.h"

#include <optional>

#include <gtest/gtest.h>

namespace
{

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
