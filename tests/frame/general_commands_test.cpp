#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/trial.h"

namespace
{

using testing::Contains;

struct Case {
    const char* arguments;
    std::vector<const char*> lines;
    const char* display;
    const char* call;
};

TEST(GeneralCommands, TheirLines)
{
    const Case cases[] = {
        {"3 -$ -T",
         {},
         "Data rate set to {W}230400 baud{.} (device), {W}230400 baud{.} (PC)\n",
         "SetBaudRate(230400)"},
        {"3 -$100000 -T",
         {"reply SetBaudRate.baud 115200"},
         "Data rate set to {W}115200 baud{.} (device), {W}100000 baud{.} (PC)\n",
         "SetBaudRate(100000)"},
        {"3 -z -T", {}, "Device buffer is {W}empty{.}\n", "GetBufferState()"},
        {"3 -z -T",
         {"reply GetBufferState.empty 0"},
         "Device buffer is {R}not empty{.}\n",
         "GetBufferState()"},
        {"3 -Z -T", {}, "Buffers of the communication port were {W}purged{.}\n", "DevicePurge()"},
        {"3 -Z -T",
         {"reply DevicePurge.purged 0"},
         "{M}Buffer of the communication port could not be purged{.}\n",
         "DevicePurge()"},
        {"3 -q -P# -T",
         {},
         "Restarting the controller, please wait...\nController restarted\n",
         "Restart()"},
    };
    for (const Case& c : cases) {
        Trial trial;
        for (const char* line : c.lines)
            trial.instrument(line);
        trial.run(c.arguments);
        EXPECT_EQ(trial.display(), c.display) << c.arguments;
        EXPECT_THAT(trial.calls, Contains(c.call)) << c.arguments;
    }
}

TEST(GeneralCommands, ProgressLinesInDebugMode)
{
    Trial trial;
    trial.run("3 -pn -g -$9600 -z -Z -T");
    EXPECT_EQ(trial.display(), "Product number: {W}240101{.}\n"
                               "Setting the data rate to 9600 baud:\n"
                               "Data rate set to {W}9600 baud{.} (device), {W}9600 baud{.} (PC)\n"
                               "Getting buffer status of the device...\n"
                               "Device buffer is {W}empty{.}\n"
                               "Purging buffers of the communication port...\n"
                               "Buffers of the communication port were {W}purged{.}\n"
                               "Closing the communication stream...\n"
                               "Communication stream closed\n");
}

} // namespace
