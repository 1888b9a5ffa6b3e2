#include "simulator/simulator.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

namespace
{

const std::string heading = "Housekeeping and monitoring data of:\theat-controller\n"
                            "Data acquisition started on:\tSat, 03/14/2026, 09:26:53\n\n"
                            "Time/s\t3V3/V\t5V0/V\t24V/V\tT_CPU/\xB0"
                            "C\tT_PSU/\xB0"
                            "C\tVout/V\tVheat/V\tIout/A\tTheat/\xB0"
                            "C\n";

void run(Trial& trial, const TemporaryFile& file, const std::string& switches = "-HS")
{
    trial.run("3 " + switches + " '" + file.name() + "' -T");
}

/// 10 ms a cycle, so that file and rates are exact; one key a cycle.
void pace(Trial& trial, int cycles)
{
    trial.instrument("block GetModuleDataReadyFlags for 10");
    trial.pipe_in(std::string(static_cast<std::size_t>(cycles), 'x') + '\033');
}

TEST(Recording, FileDisplayAndSummary)
{
    Trial trial;
    pace(trial, 7);
    for (const char* line :
         {"reply GetModuleDataReadyFlags.flags 4 0 2 13 11 5",
          "fail GetModuleDataReadyFlags at 2", // takes no reply
          "fail GetHeatCtrlHousekeeping at 4", "fail GetHeatCtrlHousekeeping at 5",
          "fail GetHeatCtrlMonitoring at 3", "fail GetHeatCtrlMonitoring at 4",
          "fail GetHeatCtrlMonitoring at 5", "reply GetHeatCtrlHousekeeping.valid 0 1 1 0",
          "reply GetHeatCtrlHousekeeping.voltage33 3.3 3.4 3.2",
          "reply GetHeatCtrlHousekeeping.temperatureCPU 20 40.5 9.5",
          "reply GetHeatCtrlHousekeeping.voltage5 5", "reply GetHeatCtrlHousekeeping.voltage24 24",
          "reply GetHeatCtrlHousekeeping.temperaturePSU 30.125",
          "reply GetHeatCtrlMonitoring.ready 0 1",
          "reply GetHeatCtrlMonitoring.outputVoltage 1 10.5 11.5",
          "reply GetHeatCtrlMonitoring.heaterVoltage 1 10.25",
          "reply GetHeatCtrlMonitoring.current 0.1 2 0.1",
          "reply GetHeatCtrlMonitoring.temperature 20 79.5"})
        trial.instrument(line);
    const TemporaryFile file;
    run(trial, file);
    EXPECT_EQ(file.text(), heading + "0.010\t3.400000\t5.000\t24.000\t40.50\t30.12\n"
                                     "0.050\t3.200000\t5.000\t24.000\t9.50\t30.12\n"
                                     "0.050\t\t\t\t\t\t10.500000\t10.250000\t2.000000\t79.500\n"
                                     "0.070\t\t\t\t\t\t11.500000\t10.250000\t0.100000\t79.500\n"
                                     "\nData acquisition stopped\n"
                                     "Total duration in s:\t0.070\n"
                                     "Mean polling rate in cycles/s:\t100.000000\n"
                                     "Mean response time in ms:\t10.000000\n"
                                     "Status communication error:\t1\n"
                                     "Monitoring communication error:\t3\n"
                                     "Housekeeping communication error:\t2\n"
                                     "Monitoring data overflow:\t2\n"
                                     "Housekeeping data overflow:\t2\n"
                                     "Monitoring data received:\t2\n"
                                     "Housekeeping data received:\t2\n"
                                     "Monitoring data rate in samples/s:\t28.571429\n"
                                     "Monitoring sample period in ms:\t35.000000\n"
                                     "Housekeeping data in samples/s:\t28.571429\n"
                                     "Housekeeping sample period in ms:\t35.000000\n");
    EXPECT_EQ(trial.display(),
              "Housekeeping of heat-controller, press {W}Esc{.} to quit: Polling rate:  "
              "{W}85.71{.} c/s, Mean response time:  {W}11.7{.} ms, Errors: {M}6{.}\n"
              "  Voltages: +3V3: {C}3.200V{.}     5V0: {W}5.000V{.}     24V: {W}24.000V{.}    "
              "Temperatures: CPU:  {C}+9.5\u00B0{.}     PSU: {W}+30.1\u00B0{.}\n"
              "  Voltage output: {W}11.500V{.}    heater: {W}10.250V{.}    Current:  {W}0.100A{.}  "
              "  Heater temperature:  {W}+79.50\u00B0{.}\n"
              "  Power output:   {W}1.15W{.}    wires:  {W}0.12W{.}     heater:  {W}1.03W{.}     "
              "Heater resistance:     {W}-{.}\n"
              "Duration of the data acquisition:   {W}0.07s{.}\n"
              "Status communication error:       {W}1{.}\n"
              "Monitoring communication error:   {W}3{.}\n"
              "Housekeeping communication error: {W}2{.}\n"
              "Monitoring data overflow:         {W}2{.}\n"
              "Housekeeping data overflow:       {W}2{.}\n"
              "Monitoring data received:         {W}2{.}\n"
              "Housekeeping data received:       {W}2{.}\n"
              "Data of heat-controller saved to file '" +
                  file.name() + "'\n");
}

TEST(Recording, NothingReady)
{
    for (const int cycles : {0, 3}) {
        Trial trial;
        pace(trial, cycles);
        trial.instrument("reply GetModuleDataReadyFlags.flags 0");
        const TemporaryFile file;
        run(trial, file, "-q -hs");
        EXPECT_THAT(file.text(), StartsWith(heading + "\nData acquisition stopped\n"));
        EXPECT_THAT(file.text(),
                    EndsWith(cycles == 0 ? "\nHousekeeping data received:\t0\n"
                                         : "\nHousekeeping data in samples/s:\t0.000000\n"
                                           "Housekeeping sample period in ms:\t0.000000\n"));
        EXPECT_THAT(trial.display(), StartsWith("Housekeeping of heat-controller: Polling rate: "));
        EXPECT_THAT(trial.display(), EndsWith("{W}0.0" + std::to_string(cycles) +
                                              "s{.}\nMonitoring data received:         {W}0{.}\n"
                                              "Housekeeping data received:       {W}0{.}\n"));
    }
}

TEST(Recording, IsStoredOnceASecondAndAtTheEnds)
{
    Trial trial{"latency 1"};
    trial.type(5900, "\033");
    const TemporaryFile file;
    run(trial, file);
    EXPECT_GT(trial.calls_of("GetHeatCtrlMonitoring()"), 50);
    EXPECT_EQ(virtual_platform.stores, 1 + 5 + 2) << "heading, seconds, trailer and close";
}

TEST(Recording, FailsWithItsFirstReadings)
{
    for (const char* line :
         {"fail GetHeatCtrlHousekeeping at 1", "fail GetHeatCtrlMonitoring at 1"}) {
        Trial trial{line};
        pace(trial, 0);
        const TemporaryFile file;
        run(trial, file);
        EXPECT_THAT(trial.display(),
                    EndsWith("time-out{.}\n{M}Error recording data of heat-controller to file '" +
                             file.name() + "'{.}\n"));
    }
    EXPECT_EQ(display_of("-HS /nowhere/at\033all"),
              "{M}Error opening the data file '/nowhere/at\\eall'{.}\n");
}

TEST(Recording, FailsWhenSomebodyTakesItsFileAway)
{
    for (const bool renamed : {false, true}) {
        Trial trial{"latency 10"};
        const TemporaryFile file, other;
        simulator::observe_calls([&](const simulator::CallRecord&) {
            std::error_code none_left;
            if (renamed)
                std::filesystem::rename(file.name(), other.name(), none_left);
            else
                std::filesystem::remove(file.name(), none_left);
        });
        trial.type(500, "\033");
        run(trial, file);
        EXPECT_THAT(trial.display(), HasSubstr("{M}Error writing data file{.}\n"));
        EXPECT_THAT(trial.display(), HasSubstr("{M}Error recording data of heat-controller to"));
    }
}

} // namespace
