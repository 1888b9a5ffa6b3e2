#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/trial.h"

namespace
{

struct Case {
    const char* letter;
    const char* function;
    const char* progress;
    const char* reply;
    const char* line;
};

constexpr Case cases[] = {
    {"I", "GetProductID", "Getting product identification:\n",
     "reply GetProductID.identification \"KOV 7\\x1b\"",
     "Product identification: {W}KOV 7\\e{.}\n"},
    {"N", "GetProductNo", "Getting product number:\n", "reply GetProductNo.number -1",
     "Product number: {W}-1{.}\n"},
    {"M", "GetManufDate", "Getting manufacturing date:\n", "reply GetManufDate.week 7",
     "Product manufacturing date: {W}CW07 2024{.}\n"},
    {"D", "GetFwDate", "Getting firmware date:\n", "reply GetFwDate.date \"Jul 24 2026\"",
     "Firmware date: {W}Jul 24 2026{.}\n"},
    {"F", "GetFwVersion", "Getting firmware version:\n", "reply GetFwVersion.version 0105h",
     "Firmware version: {W}1-05{.}\n"},
    {"H", "GetHwVersion", "Getting hardware version:\n", "reply GetHwVersion.version 0A00h",
     "Hardware version: {W}10-00{.}\n"},
    {"E", "GetDevType", "Getting device type:\n", "reply GetDevType.type 8ED6h",
     "Device type: {W}8ED6h{.}\n"},
    {"T", "GetHwType", "Getting hardware type:\n", "reply GetHwType.type F100h",
     "Hardware type: {W}0000F100h{.}\n"},
};

TEST(Identification, OneLineAValue)
{
    for (const Case& c : cases) {
        for (const char* first : {"P", "p"}) {
            Trial trial;
            trial.instrument(c.reply);
            trial.run(std::string{"3 -pn -g -"} + first + c.letter + " -T");
            EXPECT_THAT(trial.display(),
                        testing::HasSubstr("{.}\n" + std::string{c.progress} + c.line))
                << c.letter;
        }
    }
}

TEST(Identification, AllInTheKnownOrder)
{
    Trial trial;
    std::string expected;
    for (const Case& c : cases) {
        trial.instrument(c.reply);
        expected += c.line;
    }
    trial.run("3 -P -T");
    EXPECT_EQ(trial.display(), expected);
}

TEST(Identification, AFailurePrintsNoLabelAndDoesNotStopTheRest)
{
    for (const Case& c : cases) {
        Trial trial;
        // The session itself asks for the device type once.
        const bool asked_before = std::string_view{c.function} == "GetDevType";
        trial.instrument(std::string{"fail "} + c.function + (asked_before ? " at 2" : " at 1"));
        trial.run("3 -p -T");
        const std::string label{
            std::string_view{c.line}.substr(0, std::string_view{c.line}.find('{'))};
        EXPECT_THAT(trial.display(), testing::Not(testing::HasSubstr("\n" + label)));
        EXPECT_THAT(trial.display(),
                    testing::HasSubstr(std::string{"Error at COM_KOV_CTRL_"} + c.function + ": "));
        EXPECT_EQ(std::count(trial.calls.begin(), trial.calls.end(), "GetCommError()"), 1);
        EXPECT_THAT(trial.calls, testing::Contains("GetHwType()"));
    }
}

} // namespace
