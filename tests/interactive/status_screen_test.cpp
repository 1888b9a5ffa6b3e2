#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "interactive/screen_reports.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <algorithm>

namespace
{

/// A trial on a window that is just large enough, Esc at the given time.
struct ScreenTrial : Trial {
    explicit ScreenTrial(std::int64_t escape_ms, ScenarioLines lines = {}) : Trial{lines}
    {
        virtual_platform.size = {.columns = 132, .rows = 60};
        instrument("latency 10");
        if (escape_ms > 0)
            type(escape_ms, "\033");
    }

    /// Runs the screen; what stands there from its first row on.
    std::string shown(const char* command_line = "3")
    {
        run(command_line);
        const std::string all = screen();
        const std::size_t title = all.find("{C}K O V");
        return title == std::string::npos ? all : all.substr(all.rfind('\n', title) + 1);
    }
};

TEST(StatusScreen, TheWholeInstrument)
{
    ScreenTrial trial(5'000, {"reply GetHousekeeping.temperaturePSU 40.1",
                              "reply GetHVsupplyHousekeeping.voltageMinus22@2 -23.2",
                              "reply GetHeatCtrlMonitoring.outputVoltage 10",
                              "reply GetHeatCtrlMonitoring.heaterVoltage 9.5",
                              "reply GetHeatCtrlMonitoring.current 2",
                              "reply GetHeatCtrlMonitoring.temperature 80",
                              "reply GetHVsupplyOutputVoltage.voltage@1 2999.5",
                              "reply GetHVsupplyOutputCurrent.current@3 -1.25e-7",
                              "reply GetCompleteState.temperatureState 9",
                              "reply GetHVsupplyInterlockEnable.mask 1",
                              "reply GetHeatCtrlInterlockEnable.mask 4"});
    const std::string shown = trial.shown("3 -UY");
    const std::string supplies = "Voltages:  +24V: {W}+24.000V{.}  +5V0:  {W}+5.000V{.}  +3V3:  "
                                 "{W}+3.300V{.}  Temperature CPU: {W}+30.0\xC2\xB0"
                                 "C{.}  ";
    EXPECT_THAT(
        shown,
        StartsWith("                                            {C}K O V   C O N T R O L L E R{.}\n"
                   "\n"
                   "Port: {W}COM3{.}, data rate: {W}9600{.} baud, polling rate:"));
    EXPECT_THAT(
        shown,
        HasSubstr("\nDevice: {W}KOV-CTRL, Rev. 1-00, simulated{.}      Product number: {W}240101{.}"
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
        EXPECT_THAT(shown, HasSubstr(part));
    EXPECT_THAT(shown, EndsWith("\nProgram completed\n"));
    EXPECT_TRUE(console.cursor_visible());
}

/// What stands in a row of the screen, without its colours.
std::string text_of_row(int row)
{
    std::string text;
    for (const Cell& cell : console.cells(console.screen_place(row, 1).row))
        text += cell.character < 0x80 ? static_cast<char>(cell.character) : '?';
    return text;
}

TEST(StatusScreen, TheFrameFitsItsWindow)
{
    for (const int columns : {132, 160, 188, 189}) {
        ScreenTrial trial(500);
        virtual_platform.size.columns = columns;
        EXPECT_THAT(trial.shown("3 -g"),
                    HasSubstr("\nGetting module-presence flags:\n\n\nHousekeeping"));
        // One row for the controller only where each counter has room for ten digits.
        const bool one_row = columns >= 189;
        EXPECT_EQ(text_of_row(12).find("Measurement duration:") != std::string::npos, one_row);
        const int frame_end = one_row ? 48 : 49;
        EXPECT_THAT(text_of_row(frame_end), StartsWith("    front enabled: "));
        for (int row = frame_end + 1; row < message_area_row - 1; ++row)
            EXPECT_EQ(text_of_row(row), row == 52 ? "  Press Esc to quit" : "");
    }
    ScreenTrial quiet(500);
    (void)quiet.shown("3 -q");
    EXPECT_EQ(text_of_row(52), "");
}

TEST(StatusScreen, NeedsALargeEnoughWindow)
{
    const std::string refusal = "\n\n{M}In interactive mode, the utility requires a window with a "
                                "width of at least 132 and a height of at";
    for (const platform::WindowSize size : {platform::WindowSize{131, 60}, {132, 59}}) {
        ScreenTrial trial(0);
        virtual_platform.size = size;
        const std::string shown = trial.shown();
        EXPECT_THAT(shown, HasSubstr(refusal));
        EXPECT_THAT(shown,
                    EndsWith("restart the utility.{.}\n\n{M}This window has a width of " +
                             std::to_string(size.columns) + " and a height of " +
                             std::to_string(size.rows) + " characters.{.}\nProgram completed\n"));
        EXPECT_EQ(trial.calls_of("GetProductID()"), 0);
    }
    Trial piped;
    virtual_platform.output_is_terminal = false;
    piped.run("3 -q");
    EXPECT_EQ(piped.output(), "The interactive mode needs a terminal and is left out.\n");
}

TEST(StatusScreen, EmptySlotsAreNeverRead)
{
    ScreenTrial trial(4'000,
                      {"reply GetModulePresence.flags[0] 0", "reply GetModulePresence.flags[2] 2",
                       "reply GetModulePresence.flags[4] 0"});
    const std::string shown = trial.shown();
    std::size_t dashes = 0;
    for (std::size_t at = shown.find("  slot #0:-\n"); at != std::string::npos;
         at = shown.find("  slot #0:-\n", at + 1))
        ++dashes;
    EXPECT_EQ(dashes, 3u);
    EXPECT_THAT(shown, HasSubstr("  slot #2:-\n"));
    EXPECT_THAT(shown, HasSubstr("  base unit:  -\n"));
    EXPECT_EQ(trial.calls_of("GetHeatCtrlHousekeeping()"), 0);
    EXPECT_EQ(trial.calls_of("GetHVsupplyHousekeeping(2)"), 0);
    EXPECT_GT(trial.calls_of("GetHVsupplyHousekeeping(3)"), 0);
}

/// Whether a call is made between a first one and the next cycle.
bool follows(const Trial& trial, const char* first, const char* call)
{
    const auto begin = std::find(trial.calls.begin(), trial.calls.end(), first);
    const auto end = std::find(begin, trial.calls.end(), "GetCompleteState()");
    return std::find(begin, end, call) != end;
}

TEST(StatusScreen, CountsAndReportsWhatFails)
{
    ScreenTrial trial(4'000, {"fail GetCompleteState at 3 text \"no answer\"",
                              "fail GetHVsupplyHousekeeping@1 at 1", "fail GetProductNo at 1"});
    const std::string shown = trial.shown();
    EXPECT_THAT(shown, HasSubstr("ms, errors: {M}1{.}"));
    EXPECT_THAT(shown, HasSubstr("Product number:                              Product manuf"));
    EXPECT_THAT(shown, HasSubstr(", Error at COM_KOV_CTRL_GetCompleteState: no answer{.}\n{M}last "
                                 "I/O error message: time-out, last communication stream error: "));
    EXPECT_THAT(shown, HasSubstr("ms, errors/overflows: {W}1{.}/{W}"));
    EXPECT_EQ(trial.calls_of("Purge()"), 0) << "no call took longer than a second";
    // A failed module does not keep the next one from its turn.
    EXPECT_TRUE(follows(trial, "GetHVsupplyHousekeeping(1)", "GetHVsupplyHousekeeping(2)"));
    EXPECT_TRUE(follows(trial, "GetHVsupplyHousekeeping(1)", "GetHeatCtrlMonitoring()"));

    ScreenTrial controller(4'000,
                           {"fail GetHousekeeping at 1"}); // the rest of its cycle is skipped
    EXPECT_THAT(controller.shown(), HasSubstr("Measurement duration: "));
    EXPECT_FALSE(follows(controller, "GetHousekeeping()", "GetHeatCtrlMonitoring()"));

    ScreenTrial slow(4'000, {"block GetCompleteState at 2 for 1500", "fail GetCompleteState at 2"});
    (void)slow.shown();
    EXPECT_EQ(slow.calls_of("Purge()"), 1);
}

TEST(StatusScreen, ShowsNothingOfACycleThatFailed)
{
    // The state is read, the controller's values are not.
    ScreenTrial no_words(2'000,
                         {"reply GetCompleteState.dataReady 1", "fail GetHousekeeping always"});
    EXPECT_THAT(no_words.shown(), HasSubstr("  Device state:\n"));
    ScreenTrial no_figures(4'000, {"after 2000 fail GetCompleteState always"});
    const std::string shown = no_figures.shown();
    EXPECT_THAT(shown, Not(HasSubstr("ms, errors: {W}0{.}"))) << "they are counted all the same";
    EXPECT_THAT(shown, HasSubstr("  Device state:{W}00h"));
}

TEST(StatusScreen, OverflowsFromBeforeAreNotCounted)
{
    for (const bool again : {false, true}) {
        const std::string flags = again ? "A8h A8h 0" : "A8h 0";
        ScreenTrial trial(1'000, {again ? "reply GetCompleteState.dataReady 2 2 0"
                                        : "reply GetCompleteState.dataReady 2 0",
                                  "reply GetCompleteState.moduleDataReady[1] " + flags,
                                  "reply GetCompleteState.moduleDataReady[0] 0"});
        const std::string shown = trial.shown();
        const std::string counter = again ? "{W}0{.}/{W}1{.}" : "{W}0{.}/{W}0{.}";
        const std::size_t slot_1 = shown.find("  slot #1");
        EXPECT_LT(shown.find(counter), shown.find("  slot #0")) << again;
        EXPECT_LT(shown.find(counter, slot_1), shown.find("  slot #2", slot_1)) << again;
    }
}

TEST(StatusScreen, InvalidPresenceFlagsEndIt)
{
    ScreenTrial trial(0, {"reply GetModulePresence.valid 0"});
    EXPECT_THAT(trial.shown("3 -g"), HasSubstr("Getting module-presence flags:\n"
                                               "{M}Module-presence flags invalid!{.}\n"));
    EXPECT_EQ(trial.calls_of("GetCompleteState()"), 0);
    EXPECT_EQ(trial.exit_status, 0);
}

TEST(StatusScreen, UnknownCodes)
{
    ScreenTrial trial(1'000,
                      {"reply GetDevType.type 8ED6h 1234h", "reply GetCompleteState.state 2"});
    const std::string shown = trial.shown();
    EXPECT_THAT(shown, HasSubstr("Device type: {W}1234h{.}                  Hardware"));
    // Green, because the colour goes by the code alone.
    EXPECT_THAT(shown,
                HasSubstr("{W}0002h{.} = {W}0000 0000 0000 0010b{.}  {G}Unknown error{.}\n"));
}

TEST(StatusScreen, EchoesKeysForAQuarterOfASecond)
{
    const auto row_3_at = [](std::int64_t time_ms, const char* key) {
        ScreenTrial trial(0);
        trial.type(1'000, key);
        virtual_platform.signals = {{time_ms, 2}};
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
    EXPECT_EQ(trial.calls_of("GetModulePresence()"), 2);
    EXPECT_THAT(trial.screen(), EndsWith("Program completed\n"));
}

TEST(ScreenReports, ScrollInTheirOwnArea)
{
    Trial trial{"fail GetState always text \"no answer\""};
    virtual_platform.size = {.columns = 132, .rows = 60};
    console.start();
    program = {};
    ASSERT_FALSE(attempt(LIB(Open), std::uint8_t{3}));
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
    EXPECT_THAT(screen, StartsWith("{W}row 1{.}\n{W}row 2{.}\n"));
    EXPECT_THAT(
        screen,
        HasSubstr("{W}row 53{.}\n{M}2026/03/14, 09:27:00.589, ")); // the older ones scrolled out
    EXPECT_THAT(screen, HasSubstr("09:27:02.589, Error at COM_KOV_CTRL_GetState: no answer{.}\n"));
    EXPECT_THAT(screen, HasSubstr(", last communication stream error: "));
    EXPECT_EQ(trial.calls_of("Purge()"), 0);

    trial.instrument("fail Purge always");
    for (const bool longer : {false, true}) {
        set_purge_hold();
        virtual_time::advance_us(longer ? 1'001'000 : 1'000'000);
        report_on_screen_and_purge(Failure{"COM_KOV_CTRL_GetState"});
        EXPECT_EQ(trial.calls_of("Purge()"), longer ? 1 : 0) << "only after more than a second";
    }
    EXPECT_THAT(trial.screen(), HasSubstr(", Error at COM_KOV_CTRL_Purge: "));
}

TEST(ScreenReports, EqualOnesAreCounted)
{
    Trial trial{"fail GetState always", "fail GetEnable always"};
    virtual_platform.size = {.columns = 132, .rows = 90};
    console.start();
    program = {};
    ASSERT_FALSE(attempt(LIB(Open), std::uint8_t{3}));
    console.clear_screen();
    start_screen_reports();
    const auto resize = [](int columns, int rows) {
        virtual_platform.window_events = {
            {0, platform::WindowChange::resized, {.columns = columns, .rows = rows}}};
        console.flush();
        fit_screen_reports();
    };
    const auto errors_at = [&](const std::string& function, const char* end) {
        const std::string screen = trial.screen();
        const std::string text = "Error at COM_KOV_CTRL_" + function + end;
        std::ptrdiff_t found = 0;
        for (std::size_t at = screen.find(text); at != std::string::npos;
             at = screen.find(text, at + 1))
            ++found;
        return found;
    };
    // Two calls that fail in turn, most of the time while nobody can see it.
    for (int report = 1; report <= 100; ++report) {
        if (report == 12)
            resize(80, 40);
        virtual_time::advance_us(1'000'000);
        report_error_on_screen(Failure{"COM_KOV_CTRL_GetState"});
        report_error_on_screen(Failure{"COM_KOV_CTRL_GetEnable"});
    }
    resize(140, 120);
    for (const char* function : {"GetState", "GetEnable"}) {
        EXPECT_EQ(errors_at(function, ": "), 10);
        EXPECT_EQ(errors_at(function, " again, 100 times in all{.}\n"), 1);
    }
    EXPECT_THAT(trial.screen(), HasSubstr("{M}2026/03/14, 09:28:"));
    // Nine others in between make it a new one; of a failed purge, too, the texts decide.
    for (int other = 0; other < 9; ++other)
        report_error_on_screen(Failure{("COM_KOV_CTRL_Other" + std::to_string(other)).c_str()});
    report_error_on_screen(Failure{"COM_KOV_CTRL_GetState"});
    EXPECT_EQ(errors_at("GetState", ": "), 11);
    // Leaving in a window that has become lower: nothing of the hidden rows comes to light.
    resize(132, 57);
    console.move_below_text();
    console.print("end");
    const std::string screen = trial.screen();
    EXPECT_THAT(screen, HasSubstr("\nend\n"));
}

} // namespace
