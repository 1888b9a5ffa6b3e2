#include "tests/support/trial.h"

namespace
{

struct Command {
    const char* letter; ///< behind M
    const char* function;
    const char* progress; ///< of the progress line: "product number"
    const char* label;
    const char* heading;
    std::string slot_0, slot_3, base;
    bool failure_ends_all = false;
};

const std::string no = " {M}no{.}"; // marks stand at the text, not at blanks
const std::string off = "{M}off{.}";
const std::string state = "{W}0000h{.}={W}0000 0000 0000 0000b{.} Device active: " + no;
const std::string module_state = state + ", Module active: " + no + ", Control active: " + no;
const std::string led =
    "Red: {M}off{.}, Green: {M}off{.}, Blue:  {G}on{.}, Color: {B}LED{.}"; // stand-by
const std::string supply_values =
    "+3V3: {W}3.300V{.}, 5V0: {W}5.000V{.}, +24V: {W}24.000V{.}, -22V: {W}-22.000V{.}+18V: "
    "{W}+18.000V{.}, -18V: {W}-18.000V{.}, +Vc: {W}+1.500V{.}, AGnd: {W}+0.000V{.}, CPU: "
    "{W}+30.0\xC2\xB0"
    "C{.}";

/// Running text goes on in the next line at the screen's edge.
std::string wrapped(std::string text)
{
    return text.replace(text.rfind(".0\xC2"), 0, "{.}\n{W}");
}

const std::string nothing = "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}";

const Command commands[] = {
    {"I", "GetModuleProductID", "product identification", "Product identification",
     "Product identifications", "{W}KOV-HTCTRL, Heat-Controller, Rev. 1-02, simulated{.}",
     "{W}KOV-HVPS, HV-Supply 500V negative, Rev. 1-01, simulated{.}",
     "{W}KOV-BASE, Base unit 200W, Rev. 1-00, simulated{.}"},
    {"N", "GetModuleProductNo", "product number", "Product number", "Product numbers",
     "{W}240211{.}", "{W}240323{.}", "{W}240401{.}"},
    {"M", "GetModuleManufDate", "manufacturing date", "Product manufacturing date",
     "Product manufacturing dates", "{W}CW11 2024{.}", "{W}CW13 2024{.}", "{W}CW06 2024{.}"},
    {"H", "GetModuleHwVersion", "hardware version", "Hardware version", "Hardware versions",
     "{W}1-02{.}", "{W}1-01{.}, FPGA: {W}2-05{.}", "{W}1-00{.}"},
    {"D", "GetModuleFwDate", "firmware date", "Firmware date", "Firmware dates",
     "{W}Feb 20 2024{.}", "{W}Jan 10 2024{.}", "{W}Dec 04 2023{.}"},
    {"F", "GetModuleFwVersion", "firmware version", "Firmware version", "Firmware versions",
     "{W}1-04{.}", "{W}2-03{.}", "{W}1-02{.}", true},
    {"E", "GetModuleDevType", "device type", "Device type", "Device types", "{W}HTCTRL{.}",
     "{W}HVPS{.}", "{W}KOVCT-BASE{.}"},
    {"T", "GetModuleHwType", "hardware type", "Hardware type", "Hardware types",
     "{W}06050180h{.} ({W}HTCTRL{.})", "{W}011C81F4h{.} ({W}HVPS{.})",
     "{W}0140C818h{.} ({W}KOVCT-200W-20{.}, {W}24V{.})"},
    {"U", "GetModuleUptimeInt", "CPU data", "Uptime", "Uptime", nothing, nothing, nothing},
    {"O", "GetModuleOptimeInt", "CPU data", "Operation time", "Operation times", nothing, nothing,
     nothing},
    {"K", "GetHVsupplyHousekeeping", "housekeeping data", "Housekeeping data", "Housekeeping data",
     "+3V3: {W}3.300V{.}, +5V0: {W}5.000V{.}, +24V: {W}24.000V{.}, CPU: {W}+30.0\xC2\xB0"
     "C{.}, PSU: {W}+32.0\xC2\xB0"
     "C{.}",
     supply_values,
     "+3V3: {W}3.300V{.}, CPU: {W}+30.0\xC2\xB0"
     "C{.}"},
    {"C", "GetModuleCPUdata", "CPU data", "CPU data", "CPU data", "{W}10.0%{.}", "{W}10.0%{.}",
     "{W}10.0%{.}"},
    {"L", "GetModuleLEDData", "LED data", "LED data", "LED data", led, led, led},
    {"S", "GetModuleState", "state", "State", "States", module_state, module_state, state},
    {"A", "GetModuleActivationState", "activation state", "Activation state", "Activation state",
     off, off, " {G}on{.}"},
};

TEST(OneModuleOrAll, ShowsWhatIsRead)
{
    for (const Command& c : commands) {
        SCOPED_TRACE(c.letter);
        const std::string letters = std::string{"-m"} + c.letter;
        const bool wraps = *c.letter == 'K';
        EXPECT_EQ(display_of(letters + '3'),
                  std::string{c.label} +
                      " of HV-supply 3: " + (wraps ? ' ' + wrapped(c.slot_3) : c.slot_3) + '\n');
        // A slot that is not there, and an invalid one, between two that are.
        EXPECT_EQ(display_of(letters + '*', {"reply GetModulePresence.flags[1] 0",
                                             "reply GetModulePresence.flags[2] 2"}),
                  std::string{c.heading} + ":\n  slot #00:  " + c.slot_0 +
                      "\n  slot #03:  " + c.slot_3 + "\n  base unit: " + c.base + '\n');
        EXPECT_THAT(display_of("-pn -g " + letters + '*'),
                    HasSubstr("{.}\nGetting " + std::string{c.progress} +
                              " of all modules:\nGetting module-presence flags:\n" + c.heading));
        EXPECT_EQ(display_of(letters + '*', {"reply GetModulePresence.valid 0"}),
                  "{M}Module-presence flags invalid!{.}\n");
        // One slot fails: the others follow, but for one command.
        const std::string failing =
            display_of(letters + '*', {std::string{"fail "} + c.function + "@1 always"});
        EXPECT_EQ(failing.find("  slot #03:  ") == std::string::npos, c.failure_ends_all);
    }
}

TEST(OneModuleOrAll, TypesThatDoNotFitTheirPlace)
{
    const std::string base_is_supply = "reply GetModuleDevType.type@128 2573";
    expect_shown({
        {"reply GetModuleHwType.type@128 0FFFFFFFFh", "-mt_",
         HasSubstr("({W}KOVCT-4095W-255{.}, {W}255V{.})")},
        {"reply GetModuleDevType.type@0 2573", "-mt0", HasSubstr("({M}invalid{.})")},
        {"reply GetModuleDevType.type@2 56092", "-mt2", HasSubstr("({M}invalid{.})")},
        {base_is_supply, "-bt", HasSubstr("({M}invalid{.})")},
        {"reply GetModuleDevType.type@0 7220", "-mt*",
         HasSubstr("slot #00:  {W}06050180h{.} ({M}invalid{.})")},
        {base_is_supply, "-mt*", HasSubstr("base unit: {W}0140C818h{.} ({M}invalid{.})")},
        {base_is_supply, "-be", HasSubstr("base module: {W}HVPS{.}")},
        {base_is_supply, "-me*", HasSubstr("base unit: {M}unknown{.}")},
        {"reply GetModuleDevType.type@2 7220", "-me*", HasSubstr("slot #02:  {W}KOVCT-BASE{.}")},
        {"reply GetModuleDevType.type@2 1", "-me2", HasSubstr("HV-supply 2: {M}unknown{.}")},
        {"reply GetHVsupplyFpgaVersion.version@1 123405FFh", "-mh1",
         HasSubstr("FPGA: {W}4660-05{.}")},
        // A failed FPGA version stands below the hardware version.
        {"fail GetHVsupplyFpgaVersion@1 always", "-mh*",
         testing::AllOf(HasSubstr("  slot #01:  {W}1-01{.}\n{M}2026"),
                        HasSubstr("  slot #03:  {W}1-01{.}, FPGA: {W}2-05{.}\n"))},
    });
}

TEST(Housekeeping, OfModulesIsShownAsReadInTheColoursOfItsTolerances)
{
    expect_shown({
        {"reply GetHVsupplyHousekeeping.valid 0", "-mk1", HasSubstr("+3V3: {W}3.300V")},
        {"reply GetHVsupplyHousekeeping.voltage33 3.37", "-mk1", HasSubstr("+3V3: {M}3.370V")},
        {"reply GetHVsupplyHousekeeping.voltage5 4.89", "-mk1", HasSubstr(" 5V0: {C}4.890V")},
        {"reply GetHVsupplyHousekeeping.voltageMinus22 -20.9", "-mk1",
         HasSubstr("-22V: {W}-20.900V")},
        {"reply GetHVsupplyHousekeeping.voltageMinus22 -20.89", "-mk1",
         HasSubstr("-22V: {C}-20.890V")},
        {"reply GetHVsupplyHousekeeping.voltage18 -18.1", "-mk1", HasSubstr("+18V: {C}-18.100V")},
        {"reply GetHVsupplyHousekeeping.voltageMinus18 -18.37", "-mk1",
         HasSubstr("-18V: {M}-18.370V")},
        {"reply GetHVsupplyHousekeeping.voltageVc 1.5149", "-mk1", HasSubstr("+Vc: {W}+1.515V")},
        {"reply GetHVsupplyHousekeeping.voltageVc 1.5151", "-mk1", HasSubstr("+Vc: {M}+1.515V")},
        {"reply GetHVsupplyHousekeeping.analogGround 9.5", "-mk1", HasSubstr("AGnd: {W}+9.500V")},
        {"reply GetHVsupplyHousekeeping.temperatureCPU 40.01", "-mk1", HasSubstr("CPU: {M}+40")},
        {"reply GetHVsupplyHousekeeping.voltage24 nan", "-mk1", HasSubstr("+24V:    {W}nanV")},
    });
}

TEST(Activation, IsSetForOneOrAll)
{
    EXPECT_EQ(display_of("-MA* Y -MA0 n -BA n", {"reply GetModulePresence.flags[1] 0",
                                                 "fail SetModuleActivationState@3 at 1"}),
              "Activation state:\n"
              "  slot #00:  activation state set to  {G}on{.}\n"
              "  slot #02:  activation state set to  {G}on{.}\n"
              "  slot #03:  activation state set to  {G}on{.}\n"
              "  base unit: activation state set to  {G}on{.}\n"
              "Activation state of heat-controller set to {M}off{.}\n"
              "Activation state of base module set to {M}off{.}\n");
}

TEST(State, OfTheBaseUnit)
{
    const std::string once = "Base-device state: {W}7FFFh{.}={W}0111 1111 1111 1111b{.}\n"
                             "  Device active:  {M}no{.}\n";
    EXPECT_EQ(display_of("-ms_ -bs", {"reply GetModuleState.state@128 7FFFh"}), once + once);
    EXPECT_EQ(live_display_of("-BS", 75, {"reply GetModuleState.state@128 8000h"}),
              "Base-device state, press {W}Esc{.} to quit: {W}8000h{.}={W}1000 0000 0000 0000b{.}"
              "   Polling rate: {W}100.00{.} cycles/s     Mean response time:  {W}10.0ms{.}\n"
              "  Device active: {G}yes{.}\n");
    // One failure is enough; it is told on the spot, and the cursor stays hidden.
    EXPECT_THAT(display_of("-BS", {"latency 10", "fail GetModuleState at 2"}),
                HasSubstr("  Device active:  {M}no2026/03/14, "));
}

TEST(ProductData, EachOnceAndWhateverFails)
{
    const std::string base = display_of("-B", {"fail GetModuleFwVersion always"});
    EXPECT_THAT(base, StartsWith("Product identification of base module: "));
    EXPECT_THAT(base, HasSubstr("Error at COM_KOV_CTRL_GetModuleFwVersion"));
    EXPECT_THAT(base, EndsWith("CPU data of base module: {W}10.0%{.}\n"
                               "Base-device state: {W}0000h{.}={W}0000 0000 0000 0000b{.}"
                               "\n  Device active:  {M}no{.}\n"));
    const std::string heater = display_of("-H", {"fail GetHeatCtrlHwLimits always"});
    std::size_t behind = 0;
    for (const char* line :
         {"Activation state of heat-controller: ", "Output voltage control: ",
          "Heater power control: ", "Error at COM_KOV_CTRL_GetHeatCtrlHwLimits",
          "Maximum heater voltage of ", "Maximum heater current of ", "Maximum heater power of ",
          "Target heater temperature of ", "Monitoring of heat-controller:\n",
          "Interlock state of heat-controller:\n"}) {
        SCOPED_TRACE(line);
        const std::size_t at = heater.find(line);
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(heater.find(line, at + 1), std::string::npos);
        EXPECT_GT(at, behind);
        behind = at;
    }
}

} // namespace
