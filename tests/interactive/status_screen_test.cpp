#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/console.h"
#include "frame/device_call.h"
#include "frame/program.h"
#include "interactive/screen_reports.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// A trial on a window that is just large enough, Esc at the given time.
struct ScreenTrial : Trial {
    explicit ScreenTrial(std::int64_t escape_ms = 500)
    {
        virtual_platform.size = {.columns = 132, .rows = 60};
        instrument("latency 10");
        if (escape_ms > 0)
            type(escape_ms, "\033");
    }

    /// What stands on the screen from its first row on.
    [[nodiscard]] std::string shown() const
    {
        const std::string all = screen();
        const std::size_t title = all.find("{C}K O V");
        return title == std::string::npos ? all : all.substr(all.rfind('\n', title) + 1);
    }
};

std::ptrdiff_t count(const Trial& trial, const std::string& call)
{
    return std::count(trial.calls.begin(), trial.calls.end(), call);
}

TEST(StatusScreen, TheWholeInstrument)
{
    ScreenTrial trial(5'000);
    trial.instrument("reply GetHousekeeping.temperaturePSU 40.1");
    trial.instrument("reply GetHVsupplyHousekeeping.voltageMinus22@2 -23.2");
    trial.instrument("reply GetHeatCtrlMonitoring.outputVoltage 10");
    trial.instrument("reply GetHeatCtrlMonitoring.heaterVoltage 9.5");
    trial.instrument("reply GetHeatCtrlMonitoring.current 2");
    trial.instrument("reply GetHeatCtrlMonitoring.temperature 80");
    trial.instrument("reply GetHVsupplyOutputVoltage.voltage@1 2999.5");
    trial.instrument("reply GetHVsupplyOutputCurrent.current@3 -1.25e-7");
    trial.instrument("reply GetCompleteState.temperatureState 9");
    trial.instrument("reply GetHVsupplyInterlockEnable.mask 1");
    trial.instrument("reply GetHeatCtrlInterlockEnable.mask 4");
    trial.run("3 -UY");
    const std::string supplies = "Voltages:  +24V: {W}+24.000V{.}  +5V0:  {W}+5.000V{.}  +3V3:  "
                                 "{W}+3.300V{.}  Temperature CPU: {W}+30.0\xC2\xB0"
                                 "C{.}  ";
    EXPECT_THAT(
        trial.shown(),
        testing::StartsWith(
            "                                            {C}K O V   C O N T R O L L E R{.}\n"
            "\n"
            "Port: {W}COM3{.}, data rate: {W}9600{.} baud, polling rate:"));
    EXPECT_THAT(
        trial.shown(),
        HasSubstr("\nDevice: {W}KOV-CTRL, Controller, Rev. 1-00{.}     Product number: {W}240101{.}"
                  "                       Product manufacturing date: {W}CW7 2024{.}\n"
                  "        Device type: {W}8ED6h{.} = {W}KOV-CTRL{.}       Hardware type: "
                  "{W}0000F100h{.}\n"
                  "        Hardware version: {W}1-00{.}              Firmware version: {W}1-10{.}"
                  "                       Firmware date: {W}Mar 15 2024{.}\n"
                  "\n"
                  "Housekeeping data:\n"
                  "  controller:       " +
                  supplies +
                  "PSU: {M}+40.1\xC2\xB0"
                  "C{.}\n"));
    for (const std::string& part : {
             "  slot #0 (HTCTR):  " + supplies + "PSU: {W}+",
             "  slot #2 (HVPS):   " + supplies +
                 "-22V: {M}-23.200V{.}\n"
                 "            +18V: {W}+18.000V{.}  -18V: {W}-18.000V{.}  +1V5: {W}+1.500V{.}  "
                 "AGnd: "
                 "{W}+0.000V{.}  Measurement duration:",
             std::string{"  base unit:        Voltages:  +3V3:  {W}+3.300V{.}  Temperature CPU: "
                         "{W}+30.0\xC2\xB0"
                         "C{.}   Measurement duration:"},
             std::string{"\nMonitoring data:\n"
                         "  slot #0 (HTCTR):  Voltage output: {W}10.000V{.} heater:  {W}9.500V{.} "
                         "Current:  {W}2.000A{.} Heater temperature:  {W}+80.00\xC2\xB0"
                         "C{.} "
                         "Power output:    {W}20.00W{.}\n"
                         "          wires:    {W}1.00W{.} heater:   {W}19.00W{.} Heater "
                         "resistance:   {W}4.750Ohm{.}  Measurement duration:"},
             std::string{"  slot #1 (HVPS):   Voltage: {W}+2999.500V{.}  "},
             std::string{"                    Current: {W}-1.250e-07A{.}  "},
             std::string{"\nStatus words:\n"
                         "  controller:       {W}0000h{.} = {W}0000 0000 0000 0000b{.}  {G}OK{.}\n"
                         "  slot #0 (HTCTR):  {W}8000h{.} = {W}1000 0000 0000 0000b{.}  Device: "
                         "{G}active{.}  Module: {Y}off{.}     Temperature control: {Y}off{.}\n"},
             std::string{"Module: {Y}off{.}     Voltage control: {Y}off{.}\n"
                         "  base unit:\n\nController state:\n"
                         "  Device state:{W}00h{.} = {W}0000 0000b{.}  Interlock: {G}OK{.}    "
                         "Supply voltages: {G}OK{.}    Temperature: {G}OK{.}    Fan : {G}OK{.}    "
                         "Module configuration: {G}OK{.}\n"
                         "  Voltage state:{W}37h{.} = {W}0011 0111b{.}  Line: {G}OK{.}    PSU: "
                         "{G}OK{.}    24V: {G}OK{.}    5V0: {G}OK{.}    3V3: {G}OK{.}\n"
                         "  Temperature state:{W}09h{.} = {W}0000 1001b{.}  overheated CPU: "
                         "{M}yes{.}, PSU:  {G}no{.}  undercooled CPU:  {G}no{.}, PSU: {M}yes{.}\n"
                         "  Fan state:{W}0Fh{.} = {W}0000 1111b{.}  Fan: {G}OK{.}\n"
                         "  Interlock state:{W}FF0Fh{.} = {W}1111 1111 0000 1111b{.}  HTCTR#1: "
                         "{G}OK{.}    HTCTR#2: {Y}dis.{.}  front: {G}OK{.}    rear: {Y}dis.{.}\n"
                         "  HTCTR#1 enabled: {G}yes{.}  current: {G}OK{.}    last: {G}OK{.}    "
                         "HTCTR#2 enabled:  {Y}no{.}  current: {G}OK{.}    last: {G}OK{.}\n"
                         "    front enabled: {G}yes{.}  current: {G}OK{.}    last: {G}OK{.}       "
                         "rear enabled:  {Y}no{.}  current: {G}OK{.}    last: {G}OK{.}\n"},
         })
        EXPECT_THAT(trial.shown(), HasSubstr(part));
    EXPECT_THAT(trial.shown(), testing::EndsWith("\nProgram completed\n"));
    EXPECT_TRUE(console.cursor_visible());
}

TEST(StatusScreen, EverythingEndsAboveTheMessageArea)
{
    for (const int columns : {132, 200}) {
        ScreenTrial trial;
        virtual_platform.size.columns = columns;
        trial.run("3 -g");
        int last_row = 0;
        for (int row = 1; row <= 60; ++row) {
            const int absolute = console.screen_place(row, 1).row;
            if (!console.cells(absolute).empty() && row < 59)
                last_row = row;
        }
        EXPECT_LT(last_row, message_area_row);
        EXPECT_THAT(trial.shown(), HasSubstr("\nGetting module-presence flags:\n\n\nHousekeeping"));
    }
}

TEST(StatusScreen, NeedsALargeEnoughWindow)
{
    const std::string refusal = "\n\n{M}In interactive mode, the utility requires a window with a "
                                "width of at least 132 and "
                                "a height of at";
    for (const platform::WindowSize size : {platform::WindowSize{131, 60}, {132, 59}}) {
        ScreenTrial trial(0);
        virtual_platform.size = size;
        trial.run("3");
        EXPECT_THAT(trial.shown(), HasSubstr(refusal));
        EXPECT_THAT(trial.shown(),
                    testing::EndsWith("restart the utility.{.}\n\nProgram completed\n"));
        EXPECT_THAT(trial.calls, Not(Contains("GetProductID()")));
    }
    Trial piped;
    virtual_platform.output_is_terminal = false;
    piped.run("3");
    EXPECT_THAT(piped.output(), HasSubstr("K O V   C O N T R O L L E R\n\nIn interactive mode, "));
}

TEST(StatusScreen, EmptySlotsAreNeverRead)
{
    ScreenTrial trial(4'000);
    trial.instrument("reply GetModulePresence.flags[0] 0");
    trial.instrument("reply GetModulePresence.flags[2] 2");
    trial.instrument("reply GetModulePresence.flags[4] 0");
    trial.run("3");
    const std::string shown = trial.shown();
    std::size_t dashes = 0;
    for (std::size_t at = shown.find("  slot #0:-\n"); at != std::string::npos;
         at = shown.find("  slot #0:-\n", at + 1))
        ++dashes;
    EXPECT_EQ(dashes, 3u);
    EXPECT_THAT(shown, HasSubstr("  slot #2:-\n"));
    EXPECT_THAT(shown, HasSubstr("  base unit:  -\n"));
    EXPECT_THAT(trial.calls, Not(Contains("GetHeatCtrlHousekeeping()")));
    EXPECT_THAT(trial.calls, Not(Contains("GetHVsupplyHousekeeping(2)")));
    EXPECT_THAT(trial.calls, Contains("GetHVsupplyHousekeeping(3)"));
}

TEST(StatusScreen, CountsAndReportsWhatFails)
{
    ScreenTrial trial(4'000);
    trial.instrument("fail GetCompleteState at 3 text \"no answer\"");
    trial.instrument("fail GetHVsupplyHousekeeping@1 at 1");
    trial.instrument("fail GetProductNo at 1");
    trial.run("3");
    const std::string shown = trial.shown();
    EXPECT_THAT(shown, HasSubstr("ms, errors: {M}1{.}"));
    EXPECT_THAT(shown, HasSubstr("Product number:                              Product manuf"));
    EXPECT_THAT(shown, HasSubstr(", Error at COM_KOV_CTRL_GetCompleteState: no answer{.}\n{M}last "
                                 "I/O error message: time-out, last communication stream error: "));
    EXPECT_THAT(shown, HasSubstr("{M}2026/03/14, "));
    EXPECT_THAT(shown, HasSubstr("ms, errors/overflows: {W}1{.}/{W}"));
    EXPECT_THAT(trial.calls, Not(Contains("Purge()"))) << "no call took longer than a second";
    // After a failed module the program goes on with the next kind of data.
    const auto failed =
        std::find(trial.calls.begin(), trial.calls.end(), "GetHVsupplyHousekeeping(1)");
    const auto next = std::find(failed, trial.calls.end(), "GetCompleteState()");
    EXPECT_EQ(std::find(failed, next, "GetHVsupplyHousekeeping(2)"), next);
    EXPECT_NE(std::find(failed, next, "GetHeatCtrlMonitoring()"), next);
}

TEST(StatusScreen, AFailedControllerReadingSkipsTheRestOfItsCycle)
{
    ScreenTrial trial(4'000);
    trial.instrument("fail GetHousekeeping at 1");
    trial.run("3");
    const auto failed = std::find(trial.calls.begin(), trial.calls.end(), "GetHousekeeping()");
    const auto next = std::find(failed, trial.calls.end(), "GetCompleteState()");
    EXPECT_EQ(std::find(failed, next, "GetHeatCtrlMonitoring()"), next);
    EXPECT_THAT(trial.shown(), HasSubstr("Measurement duration: "));
}

TEST(StatusScreen, ShowsNothingOfACycleThatFailed)
{
    ScreenTrial no_words(2'000); // the state is read, the controller's values are not
    no_words.instrument("reply GetCompleteState.dataReady 1");
    no_words.instrument("fail GetHousekeeping always");
    no_words.run("3");
    EXPECT_THAT(no_words.shown(), HasSubstr("  Device state:\n"));
    ScreenTrial no_figures(4'000);
    no_figures.instrument("after 2000 fail GetCompleteState always");
    no_figures.run("3");
    EXPECT_THAT(no_figures.shown(), HasSubstr("ms, errors: {W}0{.}"));
}

TEST(StatusScreen, PurgesAfterACallThatTookTooLong)
{
    ScreenTrial trial(4'000);
    trial.instrument("block GetCompleteState at 2 for 1500");
    trial.instrument("fail GetCompleteState at 2");
    trial.run("3");
    EXPECT_EQ(count(trial, "Purge()"), 1);
}

TEST(StatusScreen, OverflowsFromBeforeAreNotCounted)
{
    for (const bool again : {false, true}) {
        ScreenTrial trial(1'000);
        trial.instrument(again ? "reply GetCompleteState.dataReady 2 2 0"
                               : "reply GetCompleteState.dataReady 2 0");
        trial.instrument(again ? "reply GetCompleteState.moduleDataReady[1] A8h A8h 0"
                               : "reply GetCompleteState.moduleDataReady[1] A8h 0");
        trial.instrument("reply GetCompleteState.moduleDataReady[0] 0");
        trial.run("3");
        const std::string shown = trial.shown();
        const std::string counter = again ? "{W}0{.}/{W}1{.}" : "{W}0{.}/{W}0{.}";
        const std::size_t slot_1 = shown.find("  slot #1");
        EXPECT_EQ(shown.find(counter) < shown.find("  slot #0"), true) << again;
        EXPECT_EQ(shown.find(counter, slot_1) < shown.find("  slot #2", slot_1), true) << again;
    }
}

TEST(StatusScreen, InvalidPresenceFlagsEndIt)
{
    ScreenTrial trial(0);
    trial.instrument("reply GetModulePresence.valid 0");
    trial.run("3");
    EXPECT_THAT(trial.shown(), HasSubstr("{M}Module-presence flags invalid!{.}\n"));
    EXPECT_THAT(trial.calls, Not(Contains("GetCompleteState()")));
    EXPECT_EQ(trial.exit_status, 0);
}

TEST(StatusScreen, UnknownCodes)
{
    ScreenTrial trial(1'000);
    trial.instrument("reply GetDevType.type 8ED6h 1234h");
    trial.instrument("reply GetCompleteState.state 2");
    trial.run("3");
    EXPECT_THAT(trial.shown(), HasSubstr("Device type: {W}1234h{.}                  Hardware"));
    // Green, because the colour goes by the code alone.
    EXPECT_THAT(trial.shown(), HasSubstr("{W}0002h{.} = {W}0000 0000 0000 0010b{.}  {G}Unknown "
                                         "error{.}\n"));
}

TEST(StatusScreen, EchoesKeysForAQuarterOfASecond)
{
    const auto row_3_at = [](std::int64_t time_ms, const char* key) {
        ScreenTrial trial(0);
        trial.type(1'000, key);
        virtual_platform.signals = {{time_ms, 2}};
        trial.run("3");
        const std::string shown = trial.shown();
        const std::size_t at = shown.find("errors: {W}0{.}");
        return shown.substr(at, shown.find('\n', at) - at);
    };
    EXPECT_THAT(row_3_at(1'200, "@"), HasSubstr("   @   "));
    EXPECT_THAT(row_3_at(1'200, "\033[A"), HasSubstr("   328 "));
    EXPECT_THAT(row_3_at(1'200, "\t"), HasSubstr("     9 "));
    EXPECT_THAT(row_3_at(1'700, "@"), Not(HasSubstr("@")));
}

TEST(StatusScreen, RunsTwiceWhenAskedFor)
{
    ScreenTrial trial(1'000);
    trial.type(3'000, "\033");
    trial.run("3 -N");
    EXPECT_EQ(count(trial, "GetModulePresence()"), 2);
    EXPECT_THAT(trial.screen(), testing::EndsWith("Program completed\n"));
}

TEST(ScreenReports, ScrollInTheirOwnArea)
{
    Trial trial;
    virtual_platform.size = {.columns = 132, .rows = 60};
    trial.instrument("fail GetState always text \"no answer\"");
    console.start();
    program = {};
    ASSERT_EQ(attempt(LIB(Open), std::uint8_t{3}), nullptr);
    console.clear_screen();
    for (int row = 1; row < message_area_row; ++row)
        console.print_at(console.screen_place(row, 1), Color::value, "row %d", row);
    const Place cursor = console.place();
    start_screen_reports();
    for (int report = 0; report < 10; ++report) {
        std::uint16_t state = 0;
        set_purge_hold();
        report_on_screen_and_purge(attempt(LIB(GetState), &state));
        virtual_time::advance_us(1'000'000);
    }
    EXPECT_EQ(console.place(), cursor);
    const std::string screen = trial.screen();
    EXPECT_THAT(screen, testing::StartsWith("{W}row 1{.}\n{W}row 2{.}\n"));
    EXPECT_THAT(
        screen,
        HasSubstr("{W}row 53{.}\n{M}2026/03/14, 09:27:00.589, ")); // the older ones scrolled out
    EXPECT_THAT(screen, HasSubstr("09:27:02.589, Error at COM_KOV_CTRL_GetState: no answer{.}\n"));
    EXPECT_THAT(screen, HasSubstr(", last communication stream error: "));
    EXPECT_THAT(trial.calls, Not(testing::Contains("Purge()")));

    trial.instrument("fail Purge always");
    set_purge_hold();
    virtual_time::advance_us(1'000'000);
    report_on_screen_and_purge("COM_KOV_CTRL_GetState");
    EXPECT_THAT(trial.calls, Not(testing::Contains("Purge()"))) << "not longer than a second";
    set_purge_hold();
    virtual_time::advance_us(1'001'000);
    report_on_screen_and_purge("COM_KOV_CTRL_GetState");
    EXPECT_THAT(trial.screen(), HasSubstr(", Error at COM_KOV_CTRL_Purge: "));
}

} // namespace
