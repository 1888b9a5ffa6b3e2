#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

class VoltageTuning : public testing::Test
{
protected:
    VoltageTuning()
    {
        for (const char* line :
             {"GetHVsupplyParamsPWM.period 20e-6", "GetHVsupplyParamsPWM.width 1.5e-6",
              "GetHVsupplyParamsPWM.phaseMeasured 10e-6", "GetHVsupplyParamsPWM.voltageSet 100",
              "GetHVsupplyParamsPWM.voltageMeasured 99.5", "GetHVsupplyParamsPWM.dataReady 0",
              "GetHVsupplyOutputVoltage.voltage 99.75", "GetHVsupplyOutputCurrent.current 1.5e-9",
              "GetHVsupplyTargetOutputVoltage.voltage -1"})
            trial_.instrument(std::string{"reply "} + line);
    }

    Trial trial_{"latency 10"};
    const TemporaryFolder folder_; ///< for the files that a display names itself
};

const std::string rows =
    "   Voltage:   {W}+99.750V (positive){.}    Current: {W}+1.50000e-09A (high){.}     PWM "
    "Period: {W}20.00000us{.}\n"
    "   Measured:   {W}+99.500V{.}              Set:  {W}+100.000V{.}                   Target: ";

TEST_F(VoltageTuning, TitleAndValues)
{
    trial_.instrument("reply GetHVsupplyParamsPWM.dataReady 50h");
    trial_.type(215, "\033");
    trial_.run("3 -q -VT1 -T");
    EXPECT_THAT(
        trial_.display(),
        StartsWith("Operating parameters of HV-supply 1, press {W}Esc{.} to quit, {W}P{.}/{W}N{.} "
                   "for positive/negative voltage, {W}H{.}/{W}L{.} for high/low current range:\n"
                   " vertical arrows/{W}PgUp{.}/{W}PgDn{.} to adjust voltage fine/coarse, "
                   "({W}Alt{.}/{W}Ctrl{.} increases the steps), {W}A{.}/{W}a{.} for "
                   "activate/deactivate HVC,\n"
                   " {W}S{.} to start saving data:\n"
                   "   Polling rate: "));
    EXPECT_THAT(trial_.display(), EndsWith(rows + "{M}** off **{.}          Active:  {M}no{.}\n"));
    Trial once; // no key, one cycle
    once.type(0, "A");
    once.run("3 -q -vt3 -T");
    EXPECT_THAT(once.display(), StartsWith("Operating parameters of HV-supply 3:\n   Voltage:  "));
    EXPECT_EQ(once.calls_of("GetHVsupplyParamsPWM(3)"), 1);
}

TEST_F(VoltageTuning, StepsWithinTheLimits)
{
    const struct {
        const char* target;
        const char* keys; ///< as xterm sends them
        const char* sent;
    } cases[] = {
        {"-1", "\033[A", "0.001"},      {"-1", "\033[B", "0"},
        {"nan", "\033[5~", "10"},       {"5", "\033[6~", "0"},
        {"100", "\033[1;3A", "100.01"}, {"100", "\033[1;3B", "99.99"},
        {"100", "\033[1;5A", "100.1"},  {"100", "\033[1;5B", "99.9"},
        {"100", "\033[5;3~", "200"},    {"100", "\033[6;3~", "0"},
        {"2500", "\033[5;5~", "3000"},  {"3000", "\033[5;5~", "3000"},
        {"2500", "\033[6;5~", "1500"},  {"9999", "\033\033[B", "3000"},
    };
    for (const auto& [target, keys, sent] : cases) {
        Trial trial{"latency 10"};
        trial.instrument(std::string{"reply GetHVsupplyTargetOutputVoltage.voltage "} + target);
        trial.type(100, keys);
        trial.type(200, "\033");
        trial.run("3 -VT2 -T");
        const std::string call = std::string{"SetHVsupplyTargetOutputVoltage(2, "} + sent + ')';
        EXPECT_EQ(trial.calls_of(call), 1) << sent;
    }
}

TEST_F(VoltageTuning, LettersAndNothingElse)
{
    trial_.type(100, "nLpHAa");
    trial_.type(300, "\033[1;2A\033[C\033[2~\033OP\tqxXbB");
    trial_.type(700, "\033");
    trial_.run("3 -VT1 -T");
    std::erase_if(trial_.calls, [](const std::string& call) { return !call.starts_with("Set"); });
    EXPECT_THAT(
        trial_.calls,
        testing::ElementsAre("SetHVsupplyMeasRanges(1, 1, 1)", "SetHVsupplyMeasRanges(1, 1, 0)",
                             "SetHVsupplyMeasRanges(1, 0, 0)", "SetHVsupplyMeasRanges(1, 0, 1)",
                             "SetModuleActivationState(1, 1)", "SetModuleActivationState(1, 0)"));
}

TEST_F(VoltageTuning, SwitchesNothingByKeysThatNobodyMeansAnyMore)
{
    const struct {
        const char* busy; ///< the library, for 2 s
        std::initializer_list<TypedKeys> typed;
        std::vector<std::string> sent;
    } cases[] = {
        {"block Open for 2000", {{500, "A\033[5~N"}}, {}}, // typed before the display stands there
        {"block GetHVsupplyParamsPWM at 10 for 2000", {{500, "\033"}, {1100, "\033[5~a"}}, {}},
        {"block GetHVsupplyParamsPWM at 10 for 2000",
         {{500, std::string(60, 'x') + "\033[5~\033[5;5~ANS"}, {1100, "\033"}},
         {}},
        {"block GetHVsupplyParamsPWM at 10 for 2000",
         {{500, "\033[5~a\033[5~"}, {1100, "\033"}},
         {"SetModuleActivationState(1, 0)"}},
    };
    for (const auto& c : cases) {
        Trial trial{"latency 10", c.busy};
        virtual_platform.typed = c.typed;
        trial.type(5000, "\033");
        trial.run("3 -VT1 -T");
        EXPECT_LT(virtual_time::now_us(), 5'200'000);
        std::erase_if(trial.calls,
                      [](const std::string& call) { return !call.starts_with("Set"); });
        EXPECT_EQ(trial.calls, c.sent);
    }
}

TEST_F(VoltageTuning, SendsRangesAsFlags)
{
    trial_.instrument("reply GetHVsupplyMeasRanges.negative 2");
    trial_.type(100, "L");
    trial_.type(300, "\033");
    trial_.run("3 -VT1 -T");
    EXPECT_EQ(trial_.calls_of("SetHVsupplyMeasRanges(1, 1, 0)"), 1);
}

TEST_F(VoltageTuning, SavesWhatIsMeasured)
{
    trial_.instrument("after 300 reply GetHVsupplyParamsPWM.dataReady 10h");
    trial_.instrument("after 305 reply GetHVsupplyParamsPWM.dataReady 40h");
    trial_.instrument("after 330 reply GetHVsupplyParamsPWM.dataReady 0");
    trial_.type(100, "sS"); // s does nothing before S
    trial_.type(400, "S");
    trial_.type(500, "s");
    trial_.type(1500, "S");
    trial_.type(1600, "\033");
    trial_.run("3 -VT1 -T");
    const std::string head = "Operating parameters of:\tHV-supply 1\n"
                             "Data acquisition started on:\tSat, 03/14/2026, 09:26:5";
    const std::string first = contents("HV-supply 1 2026-03-14 09.26.53.txt");
    EXPECT_THAT(first, StartsWith(head));
    EXPECT_THAT(first,
                HasSubstr("\n\nTime/s\tWidth/ns\tPeriod/ns\tVoltage/V\tCurrent/nA\tPhase/ns\n"
                          "0."));
    EXPECT_THAT(first,
                testing::ContainsRegex("\n0\\....\t1500\\.000000\t20000\\.000000\t99\\.750000\t\t"
                                       "10000\\.000000\n0\\....\t1500\\.000000\t20000\\.000000\t\t"
                                       "1\\.500000\t10000\\.000000\n"));
    EXPECT_THAT(first, HasSubstr("\n\nData acquisition stopped\nTotal duration in s:\t0.3"));
    // Cycles since the start of the display, time since the start of the saving.
    const std::size_t rate = first.find("Mean polling rate in cycles/s:\t");
    ASSERT_NE(rate, std::string::npos);
    EXPECT_GT(std::stod(first.substr(first.find('\t', rate) + 1)), 100.0);
    const std::string second = contents("HV-supply 1 2026-03-14 09.26.55.txt");
    EXPECT_THAT(second, StartsWith(head));
    EXPECT_THAT(second, HasSubstr("Data acquisition stopped")) << "Esc ends the saving, too";
    EXPECT_THAT(trial_.display(), HasSubstr("\n {W}S{.} to start saving data:\n"));
}

TEST_F(VoltageTuning, TellsWhenEachValueWasReadAndKeepsTheRecordingOfTheSameSecond)
{
    for (const char* line :
         {"GetHVsupplyParamsPWM.dataReady 50h", "GetHVsupplyOutputVoltage.valid 1",
          "GetHVsupplyOutputCurrent.valid 1"})
        trial_.instrument(std::string{"reply "} + line);
    trial_.type(100, "S");
    trial_.type(200, "s");
    trial_.type(240, "S");
    trial_.type(400, "s");
    trial_.type(600, "\033");
    trial_.run("3 -VT1 -T");
    for (const char* end : {"", " (2)"}) {
        const std::string text =
            contents(std::string{"HV-supply 1 2026-03-14 09.26.53"} + end + ".txt");
        EXPECT_THAT(text, HasSubstr("Data acquisition stopped")) << end;
        const std::string first_row = "Phase/ns\n";
        const std::size_t voltage = text.find(first_row) + first_row.size();
        const std::size_t current = text.find('\n', voltage) + 1;
        EXPECT_NEAR(std::stod(text.substr(current)) - std::stod(text.substr(voltage)), 0.010, 1e-6);
    }
}

TEST_F(VoltageTuning, TellsWhereItSaves)
{
    trial_.type(100, "S");
    trial_.instrument("fail GetHVsupplyParamsPWM at 40");
    trial_.instrument("fail GetHVsupplyParamsPWM at 41");
    trial_.run("3 -VT1 -T");
    EXPECT_THAT(trial_.display(),
                HasSubstr("\n {W}s{.} to stop saving data to file '{W}HV-supply 1 "
                          "2026-03-14 09.26.53.txt{.}:\n"));
    EXPECT_THAT(contents("HV-supply 1 2026-03-14 09.26.53.txt"), Not(HasSubstr("stopped")));
}

} // namespace
