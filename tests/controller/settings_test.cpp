#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/trial.h"

namespace
{

using testing::Contains;
using testing::HasSubstr;

TEST(Settings, LinesAndCalls)
{
    const std::string all_on = "{.}, interlock enable:   HTCTR#1:  {G}on{.}  HTCTR#2:  {G}on{.}  "
                               "front:  {G}on{.}  rear:  {G}on{.}\n";
    const std::string half = "{.}, interlock enable:   HTCTR#1:  {G}on{.}  HTCTR#2: {M}off{.}  "
                             "front:  {G}on{.}  rear: {M}off{.}\n";
    const struct {
        const char* reply;
        const char* arguments;
        std::string display;
        const char* call;
    } cases[] = {
        {"", "-UY", "Device was {W}enabled{.}\n", "SetEnable(1)"},
        {"", "-Un", "Device was {Y}disabled{.}\n", "SetEnable(0)"},
        {"GetEnable.enable 2", "-u", "Device is {W}enabled{.}\n", "GetEnable()"},
        {"GetEnable.enable 0", "-u", "Device is {Y}disabled{.}\n", "GetEnable()"},
        {"", "-SE 0Fh", "HV-PSU interlock enable mask set to: {W}0Fh{.}={W}0000 1111b" + all_on,
         "SetHVsupplyInterlockEnable(0000000Fh)"},
        {"", "-Se 101b", "HV-PSU interlock enable mask set to: {W}05h{.}={W}0000 0101b" + half,
         "SetHVsupplyInterlockEnable(00000005h)"},
        {"GetHVsupplyInterlockEnable.mask 15", "-sE",
         "HV-PSU interlock enable mask: {W}0Fh{.}={W}0000 1111b" + all_on,
         "GetHVsupplyInterlockEnable()"},
        // Whatever is typed goes to the library as it is.
        {"", "-SG 1F5h",
         "Heat-controller interlock enable mask set to: {W}1F5h{.}={W}1111 0101b" + half,
         "SetHeatCtrlInterlockEnable(000001F5h)"},
        {"GetHeatCtrlInterlockEnable.mask 5", "-sg",
         "Heat-controller interlock enable mask: {W}05h{.}={W}0000 0101b" + half,
         "GetHeatCtrlInterlockEnable()"},
        {"", "-Ss 3",
         "Function of the slide switch 'Fan' set to: {W}03h{.}={W}0000 0011b{.}, override:  "
         "{G}on{.}, software control:  {G}on{.}\n",
         "SetFanSwitchOverride(00000003h)"},
        {"GetFanSwitchOverride.function 2", "-sS",
         "Function of the slide switch 'Fan': {W}02h{.}={W}0000 0010b{.}, override: {M}off{.}, "
         "software control:  {G}on{.}\n",
         "GetFanSwitchOverride()"},
    };
    for (const auto& c : cases) {
        Trial trial;
        if (*c.reply != '\0')
            trial.instrument(std::string{"reply "} + c.reply);
        trial.run(std::string{"3 "} + c.arguments + " -T");
        EXPECT_EQ(trial.display(), c.display) << c.arguments;
        EXPECT_THAT(trial.calls, Contains(c.call)) << c.arguments;
    }
}

TEST(Settings, NothingIsReadBackAndNothingIsShownAfterAFailure)
{
    const struct {
        const char* arguments;
        const char* function;
        const char* progress;
    } cases[] = {
        {"-UY", "SetEnable", "Enable/disable device:\n"},
        {"-u", "GetEnable", "Getting enable state of the device:\n"},
        {"-SE 1", "SetHVsupplyInterlockEnable", "Setting HV-PSU interlock enable mask:\n"},
        {"-se", "GetHVsupplyInterlockEnable", "Getting HV-PSU interlock enable mask:\n"},
        {"-SG 1", "SetHeatCtrlInterlockEnable", "Setting heat-controller interlock enable mask:\n"},
        {"-sg", "GetHeatCtrlInterlockEnable", "Getting heat-controller interlock enable mask:\n"},
        {"-SS 1", "SetFanSwitchOverride", "Setting function of the slide switch 'Fan':\n"},
        {"-ss", "GetFanSwitchOverride", "Getting function of the slide switch 'Fan':\n"},
    };
    for (const auto& c : cases) {
        Trial trial;
        trial.instrument(std::string{"fail "} + c.function + " at 1 text \"no answer\"");
        trial.run(std::string{"3 -pn -g "} + c.arguments + " -T");
        EXPECT_THAT(trial.display(),
                    HasSubstr("{.}\n" + std::string{c.progress} +
                              error_line(c.function, "09:26:53.589", "no answer")));
        EXPECT_EQ(std::count_if(trial.calls.begin(), trial.calls.end(),
                                [&](const std::string& call) {
                                    return call.starts_with(std::string{c.function} + '(');
                                }),
                  1);
    }
}

} // namespace
