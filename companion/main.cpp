#include "companion/command_line.h"
#include "frame/platform/platform.h"
#include "frame/text/format.h"

#include <cstdio>
#include <cstring>

namespace
{

bool is_set(const char* name)
{
    const char* value = platform::environment(name);
    return value != nullptr && *value != '\0';
}

bool shows_colors()
{
    const bool forced =
        is_set("CLICOLOR_FORCE") && std::strcmp(platform::environment("CLICOLOR_FORCE"), "0") != 0;
    return !is_set("NO_COLOR") && (platform::output_is_terminal() || forced);
}

/// False when standard output takes no more, or the program is asked to end.
bool write_all(std::string_view bytes)
{
    while (!bytes.empty() && platform::stop_signal() == 0)
        bytes.remove_prefix(platform::write_output(bytes, 0));
    return bytes.empty() && platform::output_failure().empty();
}

} // namespace

int main(int argc, char** argv)
{
    platform::start();
    const std::span<char*> arguments = platform::arguments(argc, argv);
    const platform::LocalTime now = platform::local_time();
    const companion::Surroundings outside{
        .out = write_all,
        .err =
            [](std::string_view bytes) {
                return std::fwrite(bytes.data(), 1, bytes.size(), stderr) == bytes.size();
            },
        .colored = shows_colors(),
        .today = formatted("%04d-%02d-%02d", now.year, now.month, now.day),
        .columns = platform::window_size().columns,
        .has_utf8 = platform::output_is_utf8()};
    const int status = companion::run({arguments.begin() + 1, arguments.end()}, outside);
    platform::restore_terminal();
    const int signal = platform::stop_signal();
    return signal != 0 ? 128 + signal : status;
}
