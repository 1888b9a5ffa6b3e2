#include "tests/support/trial.h"

namespace
{

TEST(GeneralCommands, TheirLines)
{
    expect_shown({
        {"", "-$", "Data rate set to {W}230400 baud{.} (device), {W}230400 baud{.} (PC)\n",
         "SetBaudRate(230400)"},
        {"reply SetBaudRate.baud 115200", "-$100000",
         "Data rate set to {W}115200 baud{.} (device), {W}100000 baud{.} (PC)\n",
         "SetBaudRate(100000)"},
        {"reply GetBufferState.empty 0", "-z", "Device buffer is {R}not empty{.}\n"},
        {"reply DevicePurge.purged 0", "-Z",
         "{M}Buffer of the communication port could not be purged{.}\n"},
        {"", "-q -P#", "Restarting the controller, please wait...\nController restarted\n",
         "Restart()"},
        {"", "-pn -g -$9600 -z -Z",
         "Product number: {W}240101{.}\n"
         "Setting the data rate to 9600 baud:\n"
         "Data rate set to {W}9600 baud{.} (device), {W}9600 baud{.} (PC)\n"
         "Getting buffer status of the device...\n"
         "Device buffer is {W}empty{.}\n"
         "Purging buffers of the communication port...\n"
         "Buffers of the communication port were {W}purged{.}\n"
         "Closing the communication stream...\n"
         "Communication stream closed\n"},
    });
}

} // namespace
