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

/// This thread ends the process: what the program calls on its way out has no answer.
thread_local bool is_ending = false;

/// Ends the process in its usual way, in which a program restores its terminal; the line is told
/// below whatever stands there then.
[[noreturn]] void end_process(const std::string& line)
{
    is_ending = true;
    if (!host::error_output_is_terminal())
        host::tell(line);
    else
        last_line = new std::string{line}; // outlives everything
    at_last_moment(last_line != nullptr ? tell_last_line : nullptr);
    std::exit(diverged_status);
}

struct Replay {
    const std::uint64_t process = host::process_id();
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
    if (replay().process != host::process_id())
        return; // a child that was forked has its own end
    if (const std::string left = replay().player.left(); !left.empty())
        host::tell("kov replay: " + left);
}

} // namespace

Returned answer(const Call& call)
{
    if (is_ending)
        return {.status = -1, .text = "the replay has ended"};
    Replay& the_replay = replay();
    if (the_replay.process != host::process_id())
        end_process("kov replay: a process that the program has forked calls the device library; "
                    "those calls stand in a journal of their own");
    const std::lock_guard lock{the_replay.mutex}; // for ever, when the process ends here
    at_last_moment(tell_what_is_left);
    Returned returned;
    std::string difference;
    if (!the_replay.player.answer(call, returned, difference))
        end_process("kov replay: " + difference);
    return returned;
}

} // namespace journal
