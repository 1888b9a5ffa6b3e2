#include "config/files.h"

#include "config/file_format.h"
#include "config/set_access.h"
#include "frame/files/data_file.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"

#include <array>
#include <string>

namespace
{

// ---- Texts. Errors may come over a progress text, of which nothing shall remain. ----

void print_reading_error(const char* file_name, unsigned number, const char* entry)
{
    console.clear_line();
    print_failure("Error reading the data file '%s', Section '%s', Entry '%s'",
                  printable(file_name).c_str(), section_name(number).c_str(), entry);
}

/// "Configuration #3 saved to data file 'name'", unless quiet; overwrites a progress text.
void print_done(unsigned number, const char* what, const char* file_name)
{
    if (program.quiet)
        return;
    if (number == current_configuration)
        console.print("Current configuration");
    else
        console.print("Configuration #%u", number);
    console.print(" %s data file '%s'\r\n", what, printable(file_name).c_str());
}

constexpr const char* saved_to = "saved to";
constexpr const char* loaded_from = "loaded from";

/// Shows, also in quiet mode, which set it is the turn of. What is printed next overwrites it.
void show_turn_of(unsigned number)
{
    console.print("Processing configuration #%u", number);
    console.move_to_column(1);
    console.flush_when_due();
}

// ---- Writing ----

bool create(OutputFile& file, const char* file_name)
{
    if (file.replace(file_name))
        return true;
    console.clear_line();
    print_open_error(file_name);
    return false;
}

/// Writes a text; one that the file does not take is told, and the file closed.
bool write(OutputFile& file, const char* file_name, const std::string& text)
{
    if (file.write(text) && file.flush())
        return true;
    (void)file.close();
    console.clear_line();
    print_write_error(file_name);
    return false;
}

bool complete(OutputFile& file, const char* file_name)
{
    if (file.complete())
        return true;
    console.clear_line();
    print_close_error(file_name);
    return false;
}

/// Makes a file of one section.
void save_section(const char* file_name, unsigned number, const std::string& text)
{
    OutputFile file;
    if (create(file, file_name) && write(file, file_name, text) && complete(file, file_name))
        print_done(number, saved_to, file_name);
}

void save_set(unsigned number, const char* file_name)
{
    progress("Saving configuration #%u into file '%s':\r\n", number, printable(file_name).c_str());
    SetFlags flags;
    if (!succeeded(attempt_get_flags(number, flags)))
        return;
    if (flags.valid == 0) {
        print_failure("Cannot save the configuration #%u since it is invalid!", number);
        return;
    }
    ConfigName name;
    if (!succeeded(attempt_get_name(number, name)))
        return;
    if (flags.active == 0) {
        print_failure("Cannot save the configuration #%u '%s' since it was deleted!", number,
                      name.text().c_str());
        return;
    }
    ConfigRecord record;
    if (call(LIB(GetConfigData), set_index(number), &record))
        save_section(file_name, number, set_section_text(number, name.bytes.data(), record));
}

/// Writes a set if it is active; the first one creates the file. False when that was not possible,
/// which has been told.
bool write_if_active(OutputFile& file, const char* file_name, unsigned number)
{
    SetFlags flags;
    if (!succeeded_below(attempt_get_flags(number, flags)))
        return false;
    if (flags.active == 0)
        return true; // the valid flag does not matter here
    const bool first = !file.is_open();
    if (first && !create(file, file_name))
        return false;
    ConfigName name;
    ConfigRecord record;
    if (!succeeded_below(attempt_get_name(number, name)) ||
        !succeeded_below(attempt(LIB(GetConfigData), set_index(number), &record)))
        return false;
    const std::string text = set_section_text(number, name.bytes.data(), record);
    if (!write(file, file_name, first ? text : "\n" + text))
        return false;
    print_done(number, saved_to, file_name);
    return true;
}

/// Writes the sets that are active. False when it came to an early end, which has been told.
bool write_active_sets(OutputFile& file, const char* file_name)
{
    for (unsigned number = 1; number <= highest_set_number; ++number) {
        if (interrupted_before(number))
            return false;
        show_turn_of(number);
        if (!write_if_active(file, file_name, number))
            return false;
    }
    console.clear_line();
    return true;
}

void save_all_sets(const char* file_name)
{
    constexpr std::array needed = {LIB(GetConfigFlags).row, LIB(GetConfigName).row,
                                   LIB(GetConfigData).row};
    progress("Saving all configurations into file '%s':\r\n", printable(file_name).c_str());
    if (!succeeded(first_missing(needed)))
        return;
    hide_typed_keys();
    OutputFile file;
    if (!write_active_sets(file, file_name))
        return;
    if (file.is_open())
        (void)complete(file, file_name);
    else
        console.print("No valid configurations found\r\n");
}

// ---- Reading ----

/// Reads what the file says; false after an error or an interrupt, which has been told.
bool read(const char* file_name, ConfigFileIndex& index)
{
    const bool good = read_file(file_name, [&index](std::string_view bytes) {
        index.add(bytes);
        return platform::stop_signal() == 0; // some files have no end
    });
    index.finish();
    if (!good)
        print_open_error(file_name);
    else if (platform::stop_signal() != 0)
        print_interrupted();
    return good && platform::stop_signal() == 0;
}

bool read_section(const ConfigFileIndex& index, const char* file_name, unsigned number,
                  ConfigRecord& record)
{
    const char* wrong_key = read_record(index, number, record);
    if (wrong_key != nullptr)
        print_reading_error(file_name, number, wrong_key);
    return wrong_key == nullptr;
}

/// Fills a set and marks it valid and active.
Failure attempt_fill(unsigned number, const std::string& escaped, const ConfigRecord& record)
{
    Failure failed = attempt_set_name(number, config_name(unescaped_name(escaped)));
    if (!failed)
        failed = attempt(LIB(SetConfigData), set_index(number), &record);
    return failed ? failed : attempt_set_flags(number, {.active = 1, .valid = 1});
}

void load_set(unsigned number, const char* file_name)
{
    progress("Loading configuration #%u from file '%s':\r\n", number, printable(file_name).c_str());
    if (!succeeded(first_missing(functions_that_fill_a_set)))
        return;
    ConfigFileIndex index;
    if (!read(file_name, index))
        return;
    const std::string* name = index.find(number, name_key);
    if (name == nullptr) {
        print_reading_error(file_name, number, name_key);
        return;
    }
    ConfigRecord record;
    if (read_section(index, file_name, number, record) &&
        succeeded(attempt_fill(number, *name, record)))
        print_done(number, loaded_from, file_name);
}

void load_all_sets(const char* file_name)
{
    progress("Loading all configurations from file '%s':\r\n", printable(file_name).c_str());
    if (!succeeded(first_missing(functions_that_fill_a_set)))
        return;
    ConfigFileIndex index;
    if (!read(file_name, index))
        return;
    hide_typed_keys();
    bool found = false;
    for (unsigned number = 1; number <= highest_set_number; ++number) {
        if (interrupted_before(number))
            return;
        show_turn_of(number);
        const std::string* name = index.find(number, name_key);
        if (name == nullptr)
            continue; // a section without a name is no set
        ConfigRecord record;
        if (!read_section(index, file_name, number, record) ||
            !succeeded_below(attempt_fill(number, *name, record)))
            return;
        print_done(number, loaded_from, file_name);
        found = true;
    }
    console.clear_line();
    if (!found)
        console.print("No configurations found\r\n");
}

/// False after a failure, which has been reported.
bool set_current_configuration(const ConfigRecord& record)
{
    return call(LIB(SetCurrentConfig), &record);
}

} // namespace

void save_current_configuration_to_file(const Given& given)
{
    progress("Saving current configuration into file '%s':\r\n", printable(given.text).c_str());
    ConfigRecord record;
    if (call(LIB(GetCurrentConfig), &record))
        save_section(given.text, current_configuration, current_section_text(record));
}

void load_current_configuration_from_file(const Given& given)
{
    progress("Loading current configuration from file '%s':\r\n", printable(given.text).c_str());
    ConfigFileIndex index;
    ConfigRecord record;
    if (read(given.text, index) && read_section(index, given.text, current_configuration, record) &&
        set_current_configuration(record))
        print_done(current_configuration, loaded_from, given.text);
}

void save_sets(const Given& given)
{
    if (given.has_number)
        save_set(given.number, given.text);
    else
        save_all_sets(given.text);
}

void load_sets(const Given& given)
{
    if (given.has_number)
        load_set(given.number, given.text);
    else
        load_all_sets(given.text);
}

void reset_current_configuration(const Given&)
{
    progress("Resetting current configuration\r\n");
    if (set_current_configuration({}) && !program.quiet)
        console.print("Current configuration reset\r\n");
}
