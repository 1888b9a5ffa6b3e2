#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/console.h"
#include "tests/support/trial.h"

namespace
{

using testing::HasSubstr;

std::string display_of(const std::string& reply, const std::string& arguments)
{
    Trial trial;
    trial.instrument("reply " + reply);
    trial.run("3 " + arguments + " -T");
    return trial.display();
}

TEST(OverallState, EveryCode)
{
    const struct {
        const char* code;
        const char* word;
    } cases[] = {
        {"0000h", "{G}On{.}"},
        {"0001h", "{G}Stand-by{.}"},
        {"0010h", "{M}Error: General fault{.}"},
        {"0011h", "{M}Error: Modules{.}"},
        {"0012h", "{M}Error: Supply voltage{.}"},
        {"0013h", "{M}Error: Too cold{.}"},
        {"0014h", "{M}Error: Overheating{.}"},
        {"0015h", "{M}Error: Interlock{.}"},
        {"0016h", "{W}Unknown state{.}"},
        {"0002h", "{W}Unknown state{.}"},
        {"FFFFh", "{W}Unknown state{.}"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(display_of(std::string{"GetState.state "} + c.code, "-s"),
                  std::string{"Overall state: {W}"} + c.code + "{.} = " + c.word + "\n");
}

TEST(DeviceState, SetBitsAreFaultsAndNothingRepeats)
{
    const char* const ok = "{G}OK{.}";
    const char* const fail = "{M}fail{.}";
    for (const char* arguments : {"-sd", "-SD"}) {
        for (const unsigned state : {0x00u, 0x01u, 0x02u, 0x04u, 0x08u, 0x10u, 0x1Fu, 0xE0u}) {
            const std::string display =
                display_of("GetDeviceState.state " + std::to_string(state), arguments);
            const auto word = [&](unsigned bit) {
                return (state >> bit & 1u) != 0 ? std::string{fail} : std::string{ok} + "  ";
            };
            // The tabs lead to columns that are multiples of eight.
            EXPECT_THAT(display, HasSubstr("\nInterlock: " + word(0)));
            EXPECT_THAT(display, HasSubstr("Supply voltages: " + word(1)));
            EXPECT_THAT(display, HasSubstr("Temperature: " + word(2)));
            EXPECT_THAT(display, HasSubstr("Fan: " + word(3)));
            EXPECT_THAT(display,
                        HasSubstr("Module configuration: " +
                                  ((state & 0x10u) != 0 ? std::string{fail} : std::string{ok})));
        }
    }
    EXPECT_THAT(display_of("GetDeviceState.state 1Fh", "-SD"),
                testing::StartsWith("Device state: {W}1Fh{.}={W}0001 1111b{.}\n"));
}

TEST(StateBytes, EveryFieldFromItsBit)
{
    const struct {
        const char* reply;
        const char* arguments;
        const char* display;
    } cases[] = {
        {"GetVoltageState.state 37h", "-sv",
         "Voltage state: {W}37h{.}={W}0011 0111b{.},   +3V3: {G}OK{.}  +5V0: {G}OK{.}  +24V: "
         "{G}OK{.}  PSU: {G}OK{.}  Line: {G}OK{.}\n"},
        {"GetVoltageState.state 07h", "-sv",
         "Voltage state: {W}07h{.}={W}0000 0111b{.},   +3V3: {G}OK{.}  +5V0: {G}OK{.}  +24V: "
         "{G}OK{.}  PSU: {M}fail{.}Line: {M}fail{.}\n"},
        {"GetVoltageState.state 25h", "-sv",
         "Voltage state: {W}25h{.}={W}0010 0101b{.},   +3V3: {G}OK{.}  +5V0: {M}fail{.}+24V: "
         "{G}OK{.}  PSU: {G}OK{.}  Line: {M}fail{.}\n"},
        {"GetVoltageState.state 1Ah", "-sv",
         "Voltage state: {W}1Ah{.}={W}0001 1010b{.},   +3V3: {M}fail{.}+5V0: {G}OK{.}  +24V: "
         "{M}fail{.}PSU: {M}fail{.}Line: {G}OK{.}\n"},
        {"GetTemperatureState.state 05h", "-st",
         "Temperature state: {W}05h{.}={W}0000 0101b{.},   CPU: {R}hot{.} PSU: {G}OK{.}\n"},
        {"GetTemperatureState.state 0Ah", "-st",
         "Temperature state: {W}0Ah{.}={W}0000 1010b{.},   CPU: {G}OK{.}  PSU: {R}hot{.}\n"},
        {"GetTemperatureState.state 0Ch", "-st",
         "Temperature state: {W}0Ch{.}={W}0000 1100b{.},   CPU: {B}cold{.}PSU: {B}cold{.}\n"},
        {"GetFanState.state 05h", "-sf",
         "Fan state: {W}05h{.}={W}0000 0101b{.},   Fan OK: {G}OK{.}    Switch Fan current: "
         "{M}off{.}   last:  {G}on{.}   Fan enabled:  {M}no{.}\n"},
        {"GetFanState.state 0Ah", "-sf",
         "Fan state: {W}0Ah{.}={W}0000 1010b{.},   Fan OK: {M}fail{.}  Switch Fan current:  "
         "{G}on{.}   last: {M}off{.}   Fan enabled: {G}yes{.}\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(display_of(c.reply, c.arguments), c.display) << c.reply;
}

TEST(StateBytes, ContinuouslyTheFieldsStandOnTheirOwnLine)
{
    Trial trial;
    trial.instrument("reply GetVoltageState.state 37h 36h");
    trial.instrument("latency 10");
    trial.type(10, "\033"); // counts as Esc at 60 ms
    trial.run("3 -Sv -T");
    EXPECT_EQ(trial.display(),
              "Voltage state, press {W}Esc{.} to quit: {W}36h{.}={W}0011 0110b{.}   Polling rate: "
              "{W}100.00{.} cycles/s   Mean response time:  {W}10.0ms{.}\n"
              "   +3V3: {M}fail{.}+5V0: {G}OK{.}  +24V: {G}OK{.}  PSU: {G}OK{.}  Line: {G}OK{.}\n");
}

TEST(InterlockState, EachFieldShowsItsOwnBit)
{
    const struct {
        int bit;
        const char* before;
    } fields[] = {
        {8, "Interlock#1 current: "},
        {10, "Interlock#1 current: {M}fail{.}  last: "},
        {9, "Interlock#2 current: "},
        {11, "Interlock#2 current: {M}fail{.}  last: "},
        {12, "front current: "},
        {14, "front current: {M}fail{.}  last: "},
        {13, "rear current: "},
        {15, "rear current: {M}fail{.}  last: "},
        {0, "HTCTR#1: "},
        {1, "HTCTR#2: "},
        {2, "front: "},
        {3, "rear: "},
    };
    for (const auto& field : fields) {
        const std::string display =
            display_of("GetInterlockState.state " + std::to_string(1 << field.bit), "-si");
        EXPECT_THAT(display, HasSubstr(std::string{field.before} + "{G}OK{.}")) << field.bit;
        EXPECT_EQ(display.find("{G}"), display.rfind("{G}")) << "one bit, one field";
    }
    const std::string none = display_of("GetInterlockState.state F0h", "-si");
    EXPECT_EQ(none.find("{G}"), std::string::npos) << "the bits between are not shown";
}

TEST(InterlockState, RepeatsAFailedReadingOnce)
{
    Trial once;
    once.instrument("fail GetInterlockState at 1");
    once.run("3 -si -T");
    EXPECT_THAT(once.display(), testing::Not(HasSubstr("Error")));
    Trial twice;
    twice.instrument("latency 0");
    twice.instrument("fail GetInterlockState always text \"no answer\"");
    twice.run("3 -SI -pn -T");
    EXPECT_EQ(std::count(twice.calls.begin(), twice.calls.end(), "GetInterlockState()"), 2);
    EXPECT_THAT(twice.display(), HasSubstr("rear:\n" + error_line("GetInterlockState",
                                                                  "09:26:53.589", "no answer")));
    Trial live; // finer rates than elsewhere, and the keyboard comes before the reading
    live.instrument("latency 10");
    live.type(10, "\033");
    live.run("3 -SI -T");
    EXPECT_THAT(live.display(), HasSubstr("to quit: Polling rate: {W}100.00{.} cycles/s, Mean "
                                          "response time:  {W}10.00{.} ms\n"));
}

TEST(InputsAndMonitors, LettersAndWords)
{
    EXPECT_EQ(display_of("GetInputs.interlockFront 0", "-sn"),
              "Device input levels:,   Interlock Front State: {R}N{.}   Interlock Rear Level: "
              "{G}1{.}   Fan Enabled: {G}Y{.}\n");
    EXPECT_THAT(display_of("GetInputs.interlockRear 0", "-sn"), HasSubstr("Level: {R}0{.}"));
    EXPECT_THAT(display_of("GetInputs.fanEnabled 0", "-sn"), HasSubstr("Enabled: {R}N{.}"));
    EXPECT_EQ(display_of("GetPowerMonitors.acInput 0", "-sp"),
              "Power monitor state:,   AC input: {M}fail{.}   DC output: {G}OK{.}\n");
    Trial live;
    live.instrument("latency 10");
    live.type(10, "\033");
    live.run("3 -SP -T");
    EXPECT_THAT(live.display(),
                testing::StartsWith("Power monitor state, press {W}Esc{.} to quit:   Polling rate: "
                                    "{W}100.00{.} cycles/s   Mean response time:  {W}10.0ms{.}\n"
                                    "   AC input: {G}OK{.}"));
}

TEST(StatusDisplays, AFailureLeavesAFreshLineAndAVisibleCursor)
{
    const struct {
        const char* letters;
        const char* function;
    } cases[] = {{"S", "GetState"},         {"SD", "GetDeviceState"},
                 {"SV", "GetVoltageState"}, {"ST", "GetTemperatureState"},
                 {"SF", "GetFanState"},     {"SN", "GetInputs"},
                 {"SP", "GetPowerMonitors"}};
    for (const auto& c : cases) {
        Trial trial;
        trial.instrument(std::string{"fail "} + c.function + " at 1 text \"no answer\"");
        trial.run(std::string{"3 -"} + c.letters + " -pn -T");
        EXPECT_THAT(trial.screen(),
                    HasSubstr("\n" + error_line(c.function, "09:26:53.589", "no answer")));
        EXPECT_THAT(trial.display(), testing::EndsWith("\nProduct number: {W}240101{.}\n"));
        EXPECT_EQ(std::count(trial.calls.begin(), trial.calls.end(), "GetCommError()"), 1);
        EXPECT_TRUE(console.cursor_visible());
    }
}

} // namespace
