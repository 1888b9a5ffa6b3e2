#include "companion/journal/commands.h"
#include "companion/journal/format.h"
#include "companion/journal/host.h"
#include "companion/journal/load.h"
#include "companion/journal/new_file.h"
#include "companion/journal/program.h"
#include "companion/journal/writer.h"
#include "companion/report/commands.h"
#include "companion/text.h"
#include "frame/device_library.h"
#include "frame/platform/platform.h"

#include <filesystem>
#include <system_error>

namespace companion
{

namespace
{

/// One of our two libraries: in a folder beside this program, or where packages have it. Empty,
/// with a message, when it is not there.
std::string library_of(const std::string& command, const Surroundings& outside)
{
    const std::string looked_for = platform::library_candidates({}, false).back().file;
    const std::string library_name = looked_for.substr(looked_for.find_last_of("/\\"));
    const std::string own = journal::own_folder();
    for (const char* place : {"/", "/../lib/kov-controller/"}) {
        std::string file = own;
        file.append(place).append(command).append(library_name);
        if (platform::is_there(file))
            return journal::absolute(file);
    }
    outside.complain("the library of kov " + command + " is not in the folder '" + command +
                     "' beside this program");
    return {};
}

bool is_file(const std::string& name)
{
    std::error_code failed;
    return std::filesystem::is_regular_file(std::u8string{name.begin(), name.end()}, failed);
}

/// Finds the program that is to run; a message tells when there is none.
journal::FoundProgram find_program(const std::vector<std::string>& program,
                                   const Surroundings& outside)
{
    journal::FoundProgram found = journal::find_program(program.front());
    if (found.file.empty())
        outside.complain(valid_utf8(program.front()) + ": " + found.problem);
    return found;
}

int run(const std::string& file, const std::vector<std::string>& program,
        const std::string& library, const Surroundings& outside)
{
    journal::set_environment("KOV_DEVICE_LIBRARY", library);
    journal::put_in_front_of_libraries(library.substr(0, library.find_last_of("/\\")));
    if (platform::stop_signal() != 0)
        return 0; // which main() knows, too
    std::string problem;
    const int status = journal::run_program(file, program, problem);
    if (!problem.empty())
        outside.complain(valid_utf8(program.front()) + ": " + problem);
    return status;
}

/// The library that the program would load: as the utility looks for it, from the program's folder
/// and, where there is none, from ours.
const DeviceLibrary* real_library(const std::string& program, const Surroundings& outside)
{
    const DeviceLibrary* library = &device_library(program);
    if (library->path.empty()) {
        forget_device_library();
        library = &device_library();
    }
    // In front of it stands a library that has them all: the program would not notice, and begin
    // what it cannot end in order.
    for (const char* function : library->missing)
        outside.complain(std::string{"the device library lacks "} + function);
    if (library->loaded)
        return library->missing.empty() ? library : nullptr;
    outside.complain(library->path.empty()
                         ? "there is no device library: " + valid_utf8(library->cause)
                         : "the device library '" + valid_utf8(library->path) +
                               "' cannot be used: " + valid_utf8(library->cause));
    return nullptr;
}

/// False, with a message, when the journal would take the place of something that the run needs.
bool may_be_replaced(const TapRequest& request, std::vector<std::string> needed,
                     const Surroundings& outside)
{
    if (request.file == "-") {
        outside.complain("the journal cannot be written to standard output, which the program has");
        return false;
    }
    // What the program's command line names it may read.
    needed.insert(needed.end(), request.program.begin(), request.program.end());
    return !is_file(request.file) || may_be_written(request.file, needed, outside);
}

/// Begins the journal and tells the tap where it is. False, with a message, when it cannot be
/// written.
bool begin_journal(const TapRequest& request, const journal::Beginning& beginning,
                   const Surroundings& outside)
{
    std::string name = request.file;
    journal::host::OutputFile file;
    const auto open = [&] {
        if (!name.empty())
            return file.open(name, journal::host::OutputFile::Opening::replace);
        name = journal::default_name(request.program, beginning.time);
        return journal::open_new(file, name, beginning.process);
    };
    const std::string line = journal::first_line(beginning);
    if (!open() || !file.write(line)) {
        outside.complain("the journal '" + valid_utf8(name) +
                         "' cannot be written: " + valid_utf8(file.problem()));
        return false;
    }
    journal::set_environment(journal::variable::journal, journal::absolute(name));
    journal::set_environment(journal::variable::journal_begun, std::to_string(line.size()));
    return true;
}

} // namespace

int tap_program(const TapRequest& request, const Surroundings& outside)
{
    const journal::FoundProgram program = find_program(request.program, outside);
    if (program.file.empty())
        return program.status;
    const std::string tap = library_of("tap", outside);
    if (tap.empty())
        return wrong_usage;
    const std::string file = journal::without_links(program.file);
    const DeviceLibrary* const real = real_library(file, outside);
    if (real == nullptr)
        return wrong_usage;
    const std::string real_file = journal::absolute(real->path);
    if (journal::host::is_same_file(real_file, tap)) {
        outside.complain("the device library '" + valid_utf8(real->path) +
                         "' is the one that writes the journal; KOV_DEVICE_LIBRARY and "
                         "LD_LIBRARY_PATH must tell the real one");
        return wrong_usage;
    }
    journal::Beginning beginning = {.command_line = request.program,
                                    .library = real_file,
                                    .library_version = real->version(),
                                    .process = journal::host::process_id(),
                                    .time = journal::host::clock().now()};
    beginning.command_line.front() = file;
    if (!may_be_replaced(request, {real_file, tap, file}, outside) ||
        !begin_journal(request, beginning, outside))
        return wrong_usage;
    journal::set_environment(journal::variable::real_library, real_file);
    return run(program.file, request.program, tap, outside);
}

int replay_journal(const ReplayRequest& request, const Surroundings& outside)
{
    const journal::FoundProgram program = find_program(request.program, outside);
    if (program.file.empty())
        return program.status;
    const std::string library = library_of("replay", outside);
    // Whatever is wrong with it is told before anything happens, so it is read twice.
    if (!is_file(request.file)) {
        outside.complain(valid_utf8(request.file) + ": there is no such file");
        return wrong_usage;
    }
    if (library.empty() || !is_sound_journal(request.file, outside))
        return wrong_usage;
    journal::set_environment(journal::variable::replayed, journal::absolute(request.file));
    journal::set_environment(journal::variable::in_real_time, request.in_real_time ? "1" : "");
    return run(program.file, request.program, library, outside);
}

} // namespace companion
