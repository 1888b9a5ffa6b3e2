#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

const std::string housekeeping_values = "  Voltages:  24V: {W}24.000V{.}  5V0: {W}5.000V{.}  "
                                        "3V3: {W}3.300V{.}  Temperature CPU:  {W}+30.0\xC2\xB0"
                                        "C{.}  PSU:  {W}+32.0\xC2\xB0"
                                        "C{.}\n";

TEST(Housekeeping, OnceAndContinuously)
{
    EXPECT_EQ(display_of("-pk"), "Device housekeeping:\n" + housekeeping_values);
    // Opening takes 20 ms; the sixth reading is over at 80 ms.
    EXPECT_EQ(live_display_of("-PK", 75), "Device housekeeping, press {W}Esc{.} to quit: Polling "
                                          "rate: {W}100.00{.} cycles/s, Mean response time:  "
                                          "{W}10.0ms{.}\n" +
                                              housekeeping_values);
    // Quiet mode loops as well, only without the prompt.
    EXPECT_EQ(live_display_of("-q -Pk", 75),
              "Device housekeeping: Polling rate: {W}100.00{.} cycles/s, Mean response time:  "
              "{W}10.0ms{.}\n" +
                  housekeeping_values);
    Trial trial; // no rate before time has passed
    trial.pipe_in("\033");
    trial.run("3 -PK -T");
    EXPECT_THAT(trial.display(), HasSubstr("Polling rate:   {W}0.00{.} cycles/s, Mean response "
                                           "time:   {W}0.0ms{.}\n"));
}

TEST(Housekeeping, ColoursWhatIsOutOfTolerance)
{
    expect_shown({
        {"reply GetHousekeeping.voltage24 24.6", "-pk", HasSubstr("24V: {M}24.600V")},
        {"reply GetHousekeeping.voltage24 23.4", "-pk", HasSubstr("24V: {C}23.400V")},
        {"reply GetHousekeeping.voltage24 24.48", "-pk", HasSubstr("24V: {W}24.480V")},
        {"reply GetHousekeeping.voltage5 5.11", "-pk", HasSubstr("5V0: {M}5.110V")},
        {"reply GetHousekeeping.voltage33 3.23", "-pk", HasSubstr("3V3: {C}3.230V")},
        {"reply GetHousekeeping.temperatureCPU 40.1", "-pk", HasSubstr("CPU:  {M}+40.1\xC2\xB0")},
        {"reply GetHousekeeping.temperatureCPU 40", "-pk", HasSubstr("CPU:  {W}+40.0\xC2\xB0")},
        {"reply GetHousekeeping.temperaturePSU 9.9", "-pk", HasSubstr("PSU:   {C}+9.9\xC2\xB0")},
        {"reply GetHousekeeping.temperaturePSU -5", "-pk", HasSubstr("PSU:   {C}-5.0\xC2\xB0")},
        {"reply GetHousekeeping.voltage24 nan", "-pk", HasSubstr("24V:    {W}nanV")},
        {"reply GetHousekeeping.voltage24 -inf", "-pk", HasSubstr("24V:   {C}-infV{.}  5V0:")},
        {"reply GetHousekeeping.voltage24 1e300", "-pk", HasSubstr("24V:{M}1.0e+300V{.} 5V0:")},
        {"reply GetHousekeeping.temperaturePSU inf", "-pk", HasSubstr("PSU:   {M}+inf\xC2\xB0")},
    });
}

TEST(Housekeeping, EchoesTheKeyTwoRowsAboveTheHeader)
{
    Trial trial{"latency 10"};
    trial.type(55, "k");
    trial.type(500, "\033");
    virtual_platform.signals = {{61, 2}}; // stops it in the cycle that shows the key
    trial.run("3 -pd -pn -PK -T");
    // The raw code stands where the header ends, over older output.
    EXPECT_THAT(trial.display(), HasSubstr("\nProduct number: {W}240101{.}\nDevice housekeeping"));
    EXPECT_THAT(trial.output(), HasSubstr("'k'"));

    Trial at_the_top{"latency 10"}; // above the program's own first row nothing is touched
    at_the_top.type(55, "k");
    at_the_top.type(100, "\033");
    at_the_top.run("3 -q -PK -T");
    EXPECT_THAT(at_the_top.output(), Not(HasSubstr("'k'")));

    Trial single;
    single.run("3 -pe -pk -T");
    EXPECT_THAT(single.output(), HasSubstr("opened for the communication stream\r\n"));
}

TEST(Cpu, OneReadingASecondOnAFixedGrid)
{
    EXPECT_EQ(display_of("-pc", {"reply GetCPUdata.load 0.125", "reply GetCPUdata.frequency 72e6"}),
              "CPU data:   Load: {W}12.5%{.}   Frequency: {W}72.00MHz{.}\n");
    EXPECT_GE(virtual_time::now_us(), 1'000'000);

    // Esc cuts the wait short, and one more reading is shown.
    Trial live{"latency 10", "reply GetCPUdata.load 0.1 0.2 0.3 1"};
    live.type(2'100, "x");
    live.type(2'500, "\033");
    live.run("3 -PC -T");
    EXPECT_THAT(live.display(), StartsWith("CPU data, press {W}Esc{.} to quit:   Load: {W}30.0%{.} "
                                           "  Frequency: {W}"));
    EXPECT_EQ(live.calls_of("GetCPUdata()"), 3);
    EXPECT_LT(virtual_time::now_us(), 2'600'000);

    Trial slow{"latency 1500"};
    slow.type(10'000, "\033");
    slow.run("3 -PC -T");
    EXPECT_LT(virtual_time::now_us(), 16'000'000);

    Trial stopped{"block GetCPUdata at 2 for 60000"}; // what was missed is not made up for
    stopped.type(65'000, "\033");
    stopped.run("3 -PC -T");
    EXPECT_LT(stopped.calls_of("GetCPUdata()"), 9);
}

TEST(Uptime, BothTimesInOneLineWithoutRemainsOfLongerOnes)
{
    const std::string line = "Device uptime: {W}59.99 sec.{.}, total: {W}100:00:00.00 sec.{.}, "
                             "Operation time: {W}1:01.00 sec.{.}, total: {W}5.00 sec.{.}\n";
    EXPECT_EQ(
        live_display_of(
            "-PU", 100,
            {"reply GetUptimeInt.seconds 59", "reply GetUptimeInt.milliseconds 990",
             "reply GetUptimeInt.totalSeconds 360000", "reply GetUptimeInt.totalMilliseconds 0",
             "reply GetOptimeInt.seconds 61", "reply GetOptimeInt.milliseconds 5",
             "reply GetOptimeInt.totalSeconds 36000 5", "reply GetOptimeInt.totalMilliseconds 0"}),
        "Press {W}Esc{.} to quit:\n" + line);
}

TEST(Fan, StateSpeedsAndDuty)
{
    const auto values = [](const char* state) {
        return std::string{"  state OK: "} + state +
               "{.}        set:  {W}2200rpm{.}     measured:  {W}2187rpm{.}     PWM control: {W}"
               "50.00%{.}\n";
    };
    EXPECT_EQ(live_display_of("-pb -PB", 45,
                              {"reply GetFanData.failed 0 1", "reply GetFanData.setSpeed 2200",
                               "reply GetFanData.measuredSpeed 2187", "reply GetFanData.pwm 0.5"}),
              "Fan data:\n" + values("{G}Y") + "Fan data, press {W}Esc{.} to quit:\n" +
                  values("{R}N"));
}

TEST(Led, TheWordInTheColourOfTheLed)
{
    const char* const colors[] = {"{K}", "{R}", "{G}", "{Y}", "{B}", "{M}", "{C}", "{W}"};
    for (unsigned index = 0; index < 8; ++index) {
        Trial trial;
        const auto set = [&](const char* name, unsigned mask) {
            const bool on = (index & mask) != 0;
            trial.instrument(std::string{"reply GetLEDData."} + name + (on ? " 2" : " 0"));
            return on ? std::string{" {G}on{.}"} : std::string{"{M}off{.}"};
        };
        const std::string red = set("red", 1);
        const std::string green = set("green", 2);
        const std::string blue = set("blue", 4);
        trial.run("3 -pl -T");
        EXPECT_EQ(trial.display(), "LED data of the base device: Red: " + red +
                                       ", Green: " + green + ", Blue: " + blue +
                                       ", Color: " + colors[index] + "LED{.}\n");
    }
    EXPECT_THAT(live_display_of("-PL", 45), StartsWith("Press {W}Esc{.} to quit\nLED data"));
}

} // namespace
