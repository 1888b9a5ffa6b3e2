#include "tests/support/trial.h"

namespace
{

TEST(Settings, LinesAndCalls)
{
    const std::string all_on = "{.}, interlock enable:   HTCTR#1:  {G}on{.}  HTCTR#2:  {G}on{.}  "
                               "front:  {G}on{.}  rear:  {G}on{.}\n";
    const std::string half = "{.}, interlock enable:   HTCTR#1:  {G}on{.}  HTCTR#2: {M}off{.}  "
                             "front:  {G}on{.}  rear: {M}off{.}\n";
    expect_shown({
        {"", "-UY", "Device was {W}enabled{.}\n", "SetEnable(1)"},
        {"", "-Un", "Device was {Y}disabled{.}\n", "SetEnable(0)"},
        {"reply GetEnable.enable 2", "-u", "Device is {W}enabled{.}\n"},
        {"reply GetEnable.enable 0", "-u", "Device is {Y}disabled{.}\n"},
        {"", "-SE 0Fh", "HV-PSU interlock enable mask set to: {W}0Fh{.}={W}0000 1111b" + all_on,
         "SetHVsupplyInterlockEnable(0000000Fh)"},
        {"", "-Se 101b", "HV-PSU interlock enable mask set to: {W}05h{.}={W}0000 0101b" + half},
        {"reply GetHVsupplyInterlockEnable.mask 15", "-sE",
         "HV-PSU interlock enable mask: {W}0Fh{.}={W}0000 1111b" + all_on},
        // Whatever is typed goes to the library as it is.
        {"", "-SG 1F5h",
         "Heat-controller interlock enable mask set to: {W}1F5h{.}={W}1111 0101b" + half,
         "SetHeatCtrlInterlockEnable(000001F5h)"},
        {"reply GetHeatCtrlInterlockEnable.mask 5", "-sg",
         "Heat-controller interlock enable mask: {W}05h{.}={W}0000 0101b" + half},
        {"", "-Ss 3",
         "Function of the slide switch 'Fan' set to: {W}03h{.}={W}0000 0011b{.}, override:  "
         "{G}on{.}, software control:  {G}on{.}\n",
         "SetFanSwitchOverride(00000003h)"},
        {"reply GetFanSwitchOverride.function 2", "-sS",
         "Function of the slide switch 'Fan': {W}02h{.}={W}0000 0010b{.}, override: {M}off{.}, "
         "software control:  {G}on{.}\n"},
    });
}

TEST(Settings, AFailureIsToldBehindTheProgressLineAndNothingIsShown)
{
    const struct {
        const char* switches;
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
    for (const auto& [switches, function, progress] : cases)
        EXPECT_THAT(display_of(std::string{"-pn -g "} + switches,
                               {std::string{"fail "} + function + " at 1"}),
                    HasSubstr("{.}\n" + std::string{progress} + "{M}2026"));
}

} // namespace
