#include "config/set_access.h"

#include "frame/platform/platform.h"
#include "frame/terminal/console.h"

ConfigName config_name(std::string_view text)
{
    ConfigName name;
    text = text.substr(0, name.bytes.size() - 1);
    text = text.substr(0, text.find('\0'));
    text.copy(name.bytes.data(), text.size());
    return name;
}

Failure attempt_get_flags(unsigned number, SetFlags& flags)
{
    return attempt(LIB(GetConfigFlags), set_index(number), &flags.active, &flags.valid);
}

Failure attempt_set_flags(unsigned number, SetFlags flags)
{
    return attempt(LIB(SetConfigFlags), set_index(number), flags.active, flags.valid);
}

Failure attempt_get_name(unsigned number, ConfigName& name)
{
    return attempt(LIB(GetConfigName), set_index(number), &name);
}

Failure attempt_set_name(unsigned number, const ConfigName& name)
{
    const char* const bytes = name.bytes.data();
    return attempt(LIB(SetConfigName), set_index(number), bytes);
}

bool succeeded_below(Failure failed)
{
    if (failed)
        console.print("\r\n");
    return succeeded(failed);
}

bool interrupted_before(unsigned number)
{
    if (platform::stop_signal() == 0)
        return false;
    console.clear_line();
    console.print(Color::warning, "interrupted");
    console.print(" before configuration #%u\r\n", number);
    return true;
}
