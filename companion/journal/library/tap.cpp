// The device library that writes a journal of every call and passes it on to the real one. It must
// never disturb the program that calls it.
#include "companion/journal/format.h"
#include "companion/journal/host.h"
#include "companion/journal/library/entry.h"
#include "companion/journal/library/last_moment.h"
#include "companion/journal/new_file.h"
#include "companion/journal/recorder.h"
#include "frame/platform/platform.h"

#include <atomic>
#include <charconv>
#include <mutex>
#include <vector>

namespace journal
{

namespace
{

constexpr std::size_t get_version = devlib::find_function("GetSWVersion");
constexpr std::size_t get_error_message = devlib::find_function("GetErrorMessage");

/// The real library.
struct RealLibrary {
    std::array<LibraryFunctionPointer, devlib::function_count> functions = {};
    std::string file;

    /// Asked only where it is needed: the library is not called more often than by the program.
    [[nodiscard]] std::uint16_t version() const
    {
        const LibraryFunctionPointer function = functions[get_version];
        return function != nullptr ? reinterpret_cast<std::uint16_t (*)()>(function)() : 0;
    }
};

/// Where it is: told by `kov`, or found as the utility finds its own, but for this library, which
/// somebody has put in front.
std::string real_library_file()
{
    if (std::optional<std::string> told = host::environment(variable::real_library))
        return *told;
    const std::string own = host::own_file();
    for (const platform::LibraryCandidate& candidate : platform::library_candidates({}, false)) {
        if (platform::is_there(candidate.file) && !host::is_same_file(candidate.file, own))
            return candidate.file;
    }
    return {};
}

RealLibrary load_real_library()
{
    RealLibrary real;
    real.file = real_library_file();
    if (real.file.empty() || host::is_same_file(real.file, host::own_file()) ||
        platform::load_library(real.file).fault != platform::LibraryFault::none) {
        host::tell("kov tap: the device library " +
                   (real.file.empty() ? "is not found" : "'" + real.file + "' cannot be used") +
                   "; every call fails");
        return real;
    }
    for (std::size_t row = 0; row < real.functions.size(); ++row) {
        const char* const name = devlib::function_names[row].text;
        real.functions[row] = platform::library_function(name);
        if (real.functions[row] == nullptr)
            host::tell(std::string{"kov tap: the device library lacks "} + name +
                       "; calls of it fail");
    }
    return real;
}

/// One process's journal. A child that a program forks gets one of its own with its first call.
class Tap
{
public:
    explicit Tap(const RealLibrary& real) : real_{real}
    {
        is_written_ = begin();
        if (!is_written_)
            host::tell("kov tap: the journal '" + name_ +
                       "' cannot be written: " + file_.problem() + "; there is none");
    }

    Returned pass_on(const Call& call)
    {
        return recorder_.pass_on(call, real_.functions[call.row],
                                 real_.functions[get_error_message]);
    }
    void finish() { recorder_.finish(); }
    void leave() { file_.close(); }
    [[nodiscard]] bool belongs_here() const { return process_ == host::process_id(); }

private:
    [[nodiscard]] bool begin()
    {
        const std::vector<std::string> words = host::command_line();
        const Moment now = host::clock().now();
        const std::optional<std::string> told = host::environment(variable::journal);
        name_ = told ? *told : default_name(words, now);
        if (const auto begun = host::environment(variable::journal_begun); told && begun) {
            std::uint64_t size = 0;
            std::from_chars(begun->data(), begun->data() + begun->size(), size);
            if (file_.open(name_, host::OutputFile::Opening::go_on, size))
                return true;
        }
        // The program's other processes, and who has no `kov` at hand.
        return open_new(file_, name_, process_) &&
               file_.write(first_line({.command_line = words,
                                       .library = real_.file,
                                       .library_version = real_.version(),
                                       .process = process_,
                                       .time = now}));
    }

    bool write(std::string_view line)
    {
        if (!is_written_ || file_.write(line))
            return is_written_;
        host::tell("kov tap: the journal '" + name_ +
                   "' cannot be written any more: " + file_.problem() + "; it is not complete");
        return false;
    }

    const RealLibrary& real_;
    const std::uint64_t process_ = host::process_id();
    host::OutputFile file_;
    std::string name_;
    bool is_written_ = false;
    Recorder recorder_{host::clock(), [this](std::string_view line) { return write(line); }};
};

/// Lives as long as the process: the program may call to its very end.
struct State {
    RealLibrary real = load_real_library();
    std::atomic<Tap*> tap = nullptr;
    std::mutex beginning;
    /// Which forks have copied. Never destroyed: a thread that is not here may have been at work.
    std::vector<const Tap*> left;
};

State& state()
{
    static State& the_state = *new State; // never destroyed
    return the_state;
}

void finish_tap()
{
    if (Tap* const tap = state().tap; tap->belongs_here())
        tap->finish();
}

Tap& current_tap()
{
    State& the_state = state();
    Tap* tap = the_state.tap;
    if (tap != nullptr && tap->belongs_here())
        return *tap;
    const std::lock_guard lock{the_state.beginning};
    tap = the_state.tap;
    if (tap != nullptr && tap->belongs_here()) // another thread was faster
        return *tap;
    if (tap != nullptr) {
        tap->leave();
        the_state.left.push_back(tap);
    }
    tap = new Tap{the_state.real};
    the_state.tap = tap;
    at_last_moment(finish_tap);
    return *tap;
}

} // namespace

Returned answer(const Call& call)
{
    // A real library that calls its own functions may get ours.
    thread_local bool is_inside = false;
    if (is_inside) {
        const LibraryFunctionPointer function = state().real.functions[call.row];
        return function != nullptr ? call.forward_to(function) : Returned{.status = -1};
    }
    is_inside = true;
    Returned returned = current_tap().pass_on(call);
    is_inside = false;
    return returned;
}

} // namespace journal
