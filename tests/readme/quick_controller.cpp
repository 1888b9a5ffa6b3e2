// KOV-Controller on the virtual clock, for pages that show acceptance tests: forty minutes pass in
// a fraction of a second. The clock starts with the computer's; the scenario file that
// KOV_SIMULATOR_SCENARIO names sets up the instrument. Nobody types.

#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

int main(int argc, char** argv)
{
    Trial trial{"latency 5", "noise on", "uptime 100"};
    virtual_time::wall_clock_start_ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                                            std::chrono::system_clock::now().time_since_epoch())
                                            .count();
    if (const char* scenario = std::getenv("KOV_SIMULATOR_SCENARIO")) {
        std::ifstream lines{scenario};
        for (std::string line; std::getline(lines, line);)
            trial.instrument(line);
    }
    virtual_platform.output_is_terminal = false;
    std::string command_line;
    for (int number = 1; number < argc; ++number)
        command_line += '\'' + std::string{argv[number]} + "' ";
    trial.run(command_line);
    std::fwrite(trial.output().data(), 1, trial.output().size(), stdout);
    return testing::Test::HasFailure() ? EXIT_FAILURE : trial.exit_status;
}
