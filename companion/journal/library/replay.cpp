// The device library that answers each call as a journal says.
#include "companion/journal/format.h"
#include "companion/journal/host.h"
#include "companion/journal/library/entry.h"
#include "companion/journal/library/last_moment.h"
#include "companion/journal/player.h"

#include <cstdlib>
#include <mutex>

namespace journal
{

namespace
{

std::string* last_line = nullptr;

void tell_last_line()
{
    host::tell(*last_line);
}

/// Ends the process in its usual way, in which a program restores its terminal; the line is told
/// below whatever stands there then.
[[noreturn]] void end_process(const std::string& line)
{
    if (!host::error_output_is_terminal())
        host::tell(line);
    else
        last_line = new std::string{line}; // outlives everything
    at_last_moment(last_line != nullptr ? tell_last_line : nullptr);
    std::exit(diverged_status);
}

struct Replay {
    std::mutex mutex;
    std::FILE* file;
    Player player;

    Replay()
        : file{host::open_to_read(host::environment(variable::replayed).value_or(""))},
          player{file, host::clock(), host::environment(variable::in_real_time).has_value()}
    {
    }
};

Replay& replay()
{
    static Replay& the_replay = *new Replay; // never destroyed
    return the_replay;
}

void tell_what_is_left()
{
    if (const std::string left = replay().player.left(); !left.empty())
        host::tell("kov replay: " + left);
}

} // namespace

Returned answer(const Call& call)
{
    Replay& the_replay = replay();
    const std::lock_guard lock{the_replay.mutex}; // for ever, when the process ends here
    at_last_moment(tell_what_is_left);
    Returned returned;
    std::string difference;
    if (!the_replay.player.answer(call, returned, difference))
        end_process("kov replay: " + difference);
    return returned;
}

} // namespace journal
