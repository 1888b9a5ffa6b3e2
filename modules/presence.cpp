#include "modules/presence.h"

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"

bool read_presence(ModulePresence& presence)
{
    progress("Getting module-presence flags:\r\n");
    return succeeded(with_repeat([&] { return attempt_presence(presence); }));
}

bool read_valid_presence(ModulePresence& presence)
{
    if (!read_presence(presence))
        return false;
    if (presence.valid == 0) {
        console.print(presence_flags_invalid);
        console.print("\r\n");
    }
    return presence.valid != 0;
}
