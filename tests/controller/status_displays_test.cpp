#include "tests/support/trial.h"

namespace
{

TEST(OverallState, EveryCode)
{
    for (const auto& [code, word] : {std::pair{"0000h", "{G}On{.}"},
                                     {"0001h", "{G}Stand-by{.}"},
                                     {"0010h", "{M}Error: General fault{.}"},
                                     {"0011h", "{M}Error: Modules{.}"},
                                     {"0012h", "{M}Error: Supply voltage{.}"},
                                     {"0013h", "{M}Error: Too cold{.}"},
                                     {"0014h", "{M}Error: Overheating{.}"},
                                     {"0015h", "{M}Error: Interlock{.}"},
                                     {"0016h", "{W}Unknown state{.}"},
                                     {"0002h", "{W}Unknown state{.}"},
                                     {"FFFFh", "{W}Unknown state{.}"}})
        EXPECT_EQ(display_of("-s", {std::string{"reply GetState.state "} + code}),
                  std::string{"Overall state: {W}"} + code + "{.} = " + word + "\n");
}

TEST(DeviceState, SetBitsAreFaultsAndNothingRepeats)
{
    // The tabs lead to columns that are multiples of eight.
    const std::string labels[] = {
        "\nInterlock: ", "Supply voltages: ", "Temperature: ", "Fan: ", "Module configuration: "};
    for (const char* switches : {"-sd", "-SD"}) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            const std::string display =
                display_of(switches, {"reply GetDeviceState.state " + std::to_string(1 << bit)});
            for (unsigned field = 0; field < 5; ++field)
                EXPECT_THAT(display,
                            HasSubstr(labels[field] + (field == bit ? "{M}fail{.}" : "{G}OK{.}")));
        }
    }
    EXPECT_EQ(display_of("-SD", {"reply GetDeviceState.state 1Fh"}),
              "Device state: {W}1Fh{.}={W}0001 1111b{.}\n"
              "Interlock: {M}fail{.} Supply voltages: {M}fail{.}   Temperature: {M}fail{.}       "
              "Fan: {M}fail{.}       Module configuration: {M}fail{.}\n");
}

TEST(StateBytes, EveryFieldFromItsBit)
{
    expect_shown({
        {"reply GetVoltageState.state 37h", "-sv",
         "Voltage state: {W}37h{.}={W}0011 0111b{.},   +3V3: {G}OK{.}  +5V0: {G}OK{.}  +24V: "
         "{G}OK{.}  PSU: {G}OK{.}  Line: {G}OK{.}\n"},
        {"reply GetVoltageState.state 07h", "-sv",
         "Voltage state: {W}07h{.}={W}0000 0111b{.},   +3V3: {G}OK{.}  +5V0: {G}OK{.}  +24V: "
         "{G}OK{.}  PSU: {M}fail{.}Line: {M}fail{.}\n"},
        {"reply GetVoltageState.state 25h", "-sv",
         "Voltage state: {W}25h{.}={W}0010 0101b{.},   +3V3: {G}OK{.}  +5V0: {M}fail{.}+24V: "
         "{G}OK{.}  PSU: {G}OK{.}  Line: {M}fail{.}\n"},
        {"reply GetVoltageState.state 1Ah", "-sv",
         "Voltage state: {W}1Ah{.}={W}0001 1010b{.},   +3V3: {M}fail{.}+5V0: {G}OK{.}  +24V: "
         "{M}fail{.}PSU: {M}fail{.}Line: {G}OK{.}\n"},
        {"reply GetTemperatureState.state 05h", "-st",
         "Temperature state: {W}05h{.}={W}0000 0101b{.},   CPU: {R}hot{.} PSU: {G}OK{.}\n"},
        {"reply GetTemperatureState.state 0Ah", "-st",
         "Temperature state: {W}0Ah{.}={W}0000 1010b{.},   CPU: {G}OK{.}  PSU: {R}hot{.}\n"},
        {"reply GetTemperatureState.state 0Ch", "-st",
         "Temperature state: {W}0Ch{.}={W}0000 1100b{.},   CPU: {B}cold{.}PSU: {B}cold{.}\n"},
        {"reply GetFanState.state 05h", "-sf",
         "Fan state: {W}05h{.}={W}0000 0101b{.},   Fan OK: {G}OK{.}    Switch Fan current: "
         "{M}off{.}   last:  {G}on{.}   Fan enabled:  {M}no{.}\n"},
        {"reply GetFanState.state 0Ah", "-sf",
         "Fan state: {W}0Ah{.}={W}0000 1010b{.},   Fan OK: {M}fail{.}  Switch Fan current:  "
         "{G}on{.}   last: {M}off{.}   Fan enabled: {G}yes{.}\n"},
    });
}

TEST(StateBytes, ContinuouslyTheFieldsStandOnTheirOwnLine)
{
    // What is typed at 10 ms counts as Esc at 60 ms.
    EXPECT_EQ(live_display_of("-Sv", 10, {"reply GetVoltageState.state 37h 36h"}),
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
            display_of("-si", {"reply GetInterlockState.state " + std::to_string(1 << field.bit)});
        EXPECT_THAT(display, HasSubstr(std::string{field.before} + "{G}OK{.}")) << field.bit;
        EXPECT_EQ(display.find("{G}"), display.rfind("{G}")) << "one bit, one field";
    }
    const std::string none = display_of("-si", {"reply GetInterlockState.state F0h"});
    EXPECT_EQ(none.find("{G}"), std::string::npos) << "the bits between are not shown";
}

TEST(InterlockState, ContinuouslyWithFinerRatesAndTheKeyboardBeforeTheReading)
{
    EXPECT_THAT(live_display_of("-SI", 10),
                HasSubstr("to quit: Polling rate: {W}100.00{.} cycles/s, Mean response time:  "
                          "{W}10.00{.} ms\n"));
}

TEST(InputsAndMonitors, LettersAndWords)
{
    expect_shown({
        {"reply GetInputs.interlockFront 0", "-sn",
         "Device input levels:,   Interlock Front State: {R}N{.}   Interlock Rear Level: "
         "{G}1{.}   Fan Enabled: {G}Y{.}\n"},
        {"reply GetInputs.interlockRear 0", "-sn", HasSubstr("Level: {R}0{.}")},
        {"reply GetInputs.fanEnabled 0", "-sn", HasSubstr("Enabled: {R}N{.}")},
        {"reply GetPowerMonitors.acInput 0", "-sp",
         "Power monitor state:,   AC input: {M}fail{.}   DC output: {G}OK{.}\n"},
    });
    EXPECT_THAT(live_display_of("-SP", 10),
                StartsWith("Power monitor state, press {W}Esc{.} to quit:   Polling rate: "
                           "{W}100.00{.} cycles/s   Mean response time:  {W}10.0ms{.}\n"
                           "   AC input: {G}OK{.}"));
}

TEST(StatusDisplays, AFailureIsToldOnAFreshLine)
{
    for (const auto& [letters, function] : {std::pair{"-S", "GetState"},
                                            {"-SD", "GetDeviceState"},
                                            {"-SV", "GetVoltageState"},
                                            {"-SI", "GetInterlockState"},
                                            {"-SN", "GetInputs"}})
        EXPECT_THAT(display_of(letters, {std::string{"fail "} + function + " always"}),
                    HasSubstr("\n{M}2026/03/14, 09:26:53.589: Error at COM_KOV_CTRL_" +
                              std::string{function}));
}

} // namespace
