/// The operating system as the program needs it: time, the terminal, signals. The tests link a
/// virtual platform instead, whose clock moves only when somebody sleeps or waits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace platform
{

/// Takes the process over: notes how the terminal stands and watches the signals that ask the
/// program to end, to stop or to look at the window size. Called once, at the very start.
void start();

/// The program's arguments as UTF-8, its name first, made of those that main() was given. A null
/// pointer stands behind them.
std::span<char*> arguments(int count, char** values);

/// Gives the terminal back as start() found it. Safe to call at any time and more than once.
void restore_terminal();

// ---- Time ----

/// Milliseconds of a clock that only ever goes forward; its zero means nothing.
std::int64_t tick_ms();

struct LocalTime {
    int year, month, day;     ///< 2026, 1..12, 1..31
    int weekday;              ///< 0 = Sunday
    int hour, minute, second; ///< 24-hour clock
    int millisecond;
};

/// The wall clock in the local time zone.
LocalTime local_time();

/// Sleeps; a request to end the program cuts the sleep short.
void sleep_ms(std::int64_t milliseconds);

/// Sleeps all of it, whatever the program is asked for.
void rest_ms(std::int64_t milliseconds);

// ---- Output ----

/// True when standard output understands cursor movement and colours.
bool output_is_terminal();

/// True when a text for the terminal may be UTF-8.
bool output_is_utf8();

struct WindowSize {
    int columns;
    int rows;

    bool operator==(const WindowSize&) const = default;
};

/// The terminal's present size; 80x25 when it does not tell.
WindowSize window_size();

enum class WindowChange {
    none,
    resized, ///< the window has another size
    resumed, ///< the program was stopped and continued, or a request to end it was answered: the
             ///< screen holds another text
};

/// What happened to the window since the last call.
WindowChange take_window_change();

/// Writes the bytes to standard output and returns how many went: fewer than all only when the
/// program was stopped or told something meanwhile, which take_window_change() tells of, in a
/// protected run, and while output is held. What nobody can receive any more counts as written; the
/// program has then been asked to end, or output_failure() says why. Behind the bytes the cursor
/// must go down that many rows to stand below everything that is on the screen: where the terminal
/// is left when the program is stopped or ended on the spot.
std::size_t write_output(std::string_view bytes, int rows_to_leave);

/// The same without a wait, for a picture: nothing in the background, where the screen is somebody
/// else's.
std::size_t write_some_output(std::string_view bytes, int rows_to_leave);

/// From on to off nothing is written to standard output that might wait in the system, as a file on
/// a disk that hangs does.
void hold_output(bool on);

/// Output held for as long as it exists: for the restoring of settings, which comes first.
class HeldOutput
{
public:
    HeldOutput() { hold_output(true); }
    ~HeldOutput() { hold_output(false); }
    HeldOutput(const HeldOutput&) = delete;
    HeldOutput& operator=(const HeldOutput&) = delete;
};

/// Why standard output could not be written (a full disk), empty when it could.
std::string output_failure();

/// Writes a line to standard error.
void tell_error(std::string_view text);

/// From on to off settings of the instrument are changed that will be restored: nothing holds the
/// program up or leaves them so without a word. Writing never waits for who receives it (what is
/// not taken is sent later). The program is not stopped, neither by Ctrl-Z, which is answered by a
/// line that says why, nor in the background. A further request to end it does so only when a call
/// blocks, and after a warning.
void protect_run(bool on);

/// A protected run for as long as it exists: from before the first change of a setting until all
/// are restored.
class ProtectedRun
{
public:
    ProtectedRun() { protect_run(true); }
    ~ProtectedRun() { protect_run(false); }
    ProtectedRun(const ProtectedRun&) = delete;
    ProtectedRun& operator=(const ProtectedRun&) = delete;
};

/// How a protected run ends that leaves the settings as they are.
enum class ForcedEnd : std::uint8_t {
    asked_for, ///< by a request while a call blocks
    crash,
};

/// What else is then to be done.
struct LastAct {
    std::string_view told; ///< to the user, as a line of its own; may be empty
    /// May only do what a signal handler may, and take no longer than a moment.
    void (*act)(ForcedEnd end);
};

/// Has it done when a protected run ends so; null = nothing.
void set_last_act(const LastAct* last_act);

// ---- Input ----

bool input_is_terminal();

/// Single keys without echo from now on, when standard input is a terminal.
void start_raw_input();

enum class InputResult {
    bytes,   ///< something was read
    nothing, ///< the time is up, or a signal came in between
    ended,   ///< there will never be anything again
};

/// Reads at most `size` waiting bytes into `buffer` and tells their number in `count`. Waits up to
/// `timeout_ms` for the first one: 0 = not at all, negative = as long as it takes. In the
/// background there are none: the terminal's keys are meant for somebody else.
InputResult read_input(unsigned char* buffer, std::size_t size, std::size_t& count,
                       std::int64_t timeout_ms);

/// Drops what was typed ahead and not read yet.
void drop_input();

// ---- The device library ----

/// Where the device library is looked for.
enum class LibraryPlace : std::uint8_t {
    named,          ///< KOV_DEVICE_LIBRARY names the file, and no other place counts
    library_path,   ///< a folder of LD_LIBRARY_PATH
    beside_program, ///< the program's own folder
    maker,          ///< the folder of an installed program that waits for the maker's library
    simulator,      ///< the folder of an installed program that has the simulated instrument
};

struct LibraryCandidate {
    LibraryPlace place;
    std::string file;
};

/// The files that may be the library of a program, in the order in which they are looked for.
/// `program` is its file, without links; empty = this process's program. Without `named` as if
/// KOV_DEVICE_LIBRARY were not set.
std::vector<LibraryCandidate> library_candidates(const std::string& program = {},
                                                 bool named = true);

/// Whether there is something of that name, be it a link that leads nowhere. Where nobody may look
/// there is.
bool is_there(const std::string& file);

enum class LibraryFault : std::uint8_t {
    none,
    absent,
    misspelt, ///< absent, but its folder is not empty; detail: the name of something there
    dangling_link,
    dangling_folder, ///< its folder is a link that leads nowhere
    no_folder,       ///< what should be its folder
    unreadable,
    no_file, ///< a folder, a device, ...
    empty,
    no_library,
    truncated,
    other_width, ///< of addresses
    other_machine,
    lacks_library, ///< that it needs; detail of these three: which one, if the system tells
    lacks_version,
    lacks_symbol,
    refused,
};

struct LibraryFailure {
    LibraryFault fault = LibraryFault::none;
    std::string detail;
};

/// What is wrong with the folder of a file that is not there: everything but to be empty.
LibraryFailure look_beside(const std::string& file);

/// Loads the library and binds all that it needs. What the system's loader could stumble over is
/// looked at before.
LibraryFailure load_library(const std::string& file);

using LibraryFunctionPointer = void (*)();

/// A function of the loaded library, null when it has none of that name.
LibraryFunctionPointer library_function(const char* name);

// ---- The outside ----

/// Runs `work` beside the program, in a thread that no signal reaches.
std::thread start_thread(std::function<void()> work);

/// Between the two a request to end the program breaks no write off that has begun: a pipe may wait
/// for its reader. For each file that is written; calls may overlap.
void begin_writing_file();
void end_writing_file();

/// Opens a file as std::fopen() does; its name is UTF-8. Text ("w") gets the line ends of the
/// system. With `before_wait` a pipe is opened as soon as somebody reads it, or has written into
/// it; not at all when the program is asked to end before. A wait that lasts begins with
/// `before_wait`, which gets the name.
std::FILE* open_file(const char* name, const char* mode,
                     void (*before_wait)(const char* name) = nullptr);

/// Waits until what the operating system holds of a file is on the disk. True, too, for what is no
/// file on a disk.
bool store_file(std::FILE* file);

/// Where a file that is open can be found.
enum class FilePlace {
    there,     ///< under that name; also what is no file on a disk
    elsewhere, ///< under another one
    nowhere,   ///< it has been removed
};
FilePlace place_of_file(std::FILE* file, const char* name);

/// How a copy came out.
enum class Copied {
    yes,           ///< it is on the disk, and open to the same people
    nothing,       ///< of that name there is no file on a disk, or an empty one: no copy
    already,       ///< it has been marked, and is still good: none was made
    name_taken,    ///< there is something else of the copy's name, which stays as it is
    name_too_long, ///< the copy's
    no,            ///< nothing is left of it
};
/// Copies a file; the copy is a new file.
Copied copy_file(const char* name, const char* copy_name);

/// Notes, by the time of the copy, that the file has come to nothing since it was copied: until it
/// is written again no other copy is made.
void mark_copy(const char* name, const char* copy_name);

void remove_file(const char* name);

/// What came of a program that was run.
struct ProgramRun {
    bool was_found = false;
    int status = 0; ///< its exit status; not 0 when it could not be run or did not end by itself
    std::string output, errors; ///< what it wrote
};

/// Runs a program that is looked for on PATH, without a shell, with these bytes as its input, and
/// waits for its end. The first argument is its name.
ProgramRun run_program(const std::vector<std::string>& arguments, std::string_view input);

/// The number of the signal that asks the program to end, 0 while there is none.
int stop_signal();

/// Value of an environment variable, null when it is not set.
const char* environment(const char* name);

} // namespace platform
