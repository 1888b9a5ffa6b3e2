// The whole acceptance test on an instrument with all its modules, under the virtual clock. Prints
// how much of that clock's time it took, in seconds. An argument names a file for the report.

#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    const TemporaryFile temporary;
    const std::string report = argc > 1 ? argv[1] : temporary.name();
    Trial trial;
    for (const char* line : {"latency 5", "noise on", "uptime 95"})
        trial.instrument(line);
    trial.run("3 -q -R " + report + " -T");
    if (trial.screen().find("Test protocol successfully completed within ") == std::string::npos) {
        std::fprintf(stderr, "the acceptance test did not reach its end\n");
        return EXIT_FAILURE;
    }
    std::printf("%.3f\n", static_cast<double>(virtual_time::now_us()) * 1e-6);
    return EXIT_SUCCESS;
}
