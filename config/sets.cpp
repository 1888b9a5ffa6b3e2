#include "config/sets.h"

#include "config/set_access.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"

#include <array>

namespace
{

/// Reads the answer to a question that has been printed, and ends its line.
bool is_confirmed()
{
    const YesNo answer = read_confirmation();
    console.print("\r\n");
    return answer == YesNo::yes;
}

/// No key that was pressed before a command or during it is left for what follows.
struct KeysOfItsOwn {
    KeysOfItsOwn() { flush_keys(); }
    ~KeysOfItsOwn() { flush_keys(); }
    KeysOfItsOwn(const KeysOfItsOwn&) = delete;
    KeysOfItsOwn& operator=(const KeysOfItsOwn&) = delete;
};

bool read_flags(unsigned number, SetFlags& flags)
{
    return succeeded_below(attempt_get_flags(number, flags));
}

bool read_name(unsigned number, ConfigName& name)
{
    return succeeded(attempt_get_name(number, name));
}

// ---- The current configuration and a set ----

void save_current_configuration_to_set(unsigned number)
{
    progress("Saving current configuration to NVM set #%u:\r\n", number);
    SetFlags flags;
    if (!read_flags(number, flags))
        return;
    ConfigName name;
    const bool overwrites = flags.valid != 0;
    if (overwrites) {
        if (!read_name(number, name))
            return;
        console.print("Configuration #%u '%s' is valid%s, overwrite anyway [y/n]?\r\n", number,
                      name.text().c_str(), flags.active != 0 ? "" : " but deleted");
        if (!is_confirmed())
            return;
    }
    if (!call(LIB(SaveCurrentConfig), set_index(number)))
        return;
    console.print("Current configuration saved to NVM set #%u", number);
    if (overwrites)
        console.print(" '%s'", name.text().c_str());
    console.print("\r\n");
}

void load_current_configuration_from_set(unsigned number)
{
    progress("Loading current configuration from NVM set #%u:\r\n", number);
    SetFlags flags;
    if (!read_flags(number, flags))
        return;
    if (flags.valid == 0) {
        print_failure("Configuration #%u is invalid!", number);
        return;
    }
    ConfigName name;
    if (!read_name(number, name))
        return;
    if (flags.active == 0) {
        print_failure("Configuration #%u '%s' is deleted!", number, name.text().c_str());
        return;
    }
    if (call(LIB(LoadCurrentConfig), set_index(number)))
        console.print("Current configuration loaded from NVM set #%u '%s'\r\n", number,
                      name.text().c_str());
}

/// Tells whether a set has a name to get or to set. Both commands refuse with "get".
bool has_name(unsigned number)
{
    SetFlags flags;
    if (!read_flags(number, flags))
        return false;
    if (flags.valid == 0)
        print_failure("Cannot get the name of the configuration #%u since it is invalid!", number);
    return flags.valid != 0;
}

// ---- Walks over the sets ----

/// The sets that a walk looks for, and what it says.
struct Walk {
    std::uint8_t active;
    bool valid_only;
    const char* heading;
    const char* none_found;
    bool changes_mark = false; ///< deletes what is active, undeletes what is deleted

    [[nodiscard]] bool is_for(std::uint8_t is_active, std::uint8_t is_valid) const
    {
        return (is_active != 0) == (active != 0) && (!valid_only || is_valid != 0);
    }
};

/// Names a set, and marks it if the walk does. False after a failure, which has been told.
bool visit(const Walk& walk, unsigned number)
{
    ConfigName name;
    if (!read_name(number, name))
        return false;
    console.print("%4u: '%s'\n", number, name.text().c_str());
    const std::uint8_t mark = walk.active != 0 ? 0 : 1;
    return !walk.changes_mark || succeeded(attempt_set_flags(number, {.active = mark, .valid = 1}));
}

/// Visits the sets that the walk is for.
void run(const Walk& walk)
{
    ConfigFlagList active{};
    ConfigFlagList valid{};
    if (!call(LIB(GetConfigList), &active, &valid))
        return;
    bool found = false;
    for (unsigned number = 1; number <= highest_set_number; ++number) {
        const std::size_t index = set_index(number);
        if (!walk.is_for(active[index], valid[index]))
            continue;
        if (interrupted_before(number))
            return;
        if (!found)
            console.print("%s:\r\n", walk.heading);
        found = true;
        if (!visit(walk, number))
            return;
    }
    if (!found)
        console.print("%s\r\n", walk.none_found);
}

constexpr const char* no_active = "No active configurations found";
constexpr const char* no_deleted = "No deleted configurations found";

// ---- Deleting and undeleting ----

/// What the two commands say and do; each is the mirror image of the other.
struct Marking {
    std::uint8_t active; ///< the mark that is set
    const char* verb;
    const char* capital_verb;
    const char* doing;
    const char* already; ///< what a set is that has the mark
    const char* done;
    Walk all;
};

constexpr Marking deleting = {
    .active = 0,
    .verb = "delete",
    .capital_verb = "Delete",
    .doing = "Deleting",
    .already = "deleted",
    .done = "deleted",
    .all = {1, true, "Deleting configuration(s)", no_active, true},
};

constexpr Marking undeleting = {
    .active = 1,
    .verb = "undelete",
    .capital_verb = "Undelete",
    .doing = "Undeleting",
    .already = "active",
    .done = "undeleted",
    .all = {0, true, "Undeleting configuration(s)", no_deleted, true},
};

void mark_one(const Marking& marking, unsigned number)
{
    const KeysOfItsOwn keys;
    progress("%s configuration #%u:\r\n", marking.doing, number);
    SetFlags flags;
    if (!read_flags(number, flags))
        return;
    if (flags.valid == 0) {
        print_failure("Cannot %s the configuration #%u since it is invalid! Wipe it out instead.",
                      marking.verb, number);
        return;
    }
    ConfigName name;
    if (!read_name(number, name))
        return;
    if ((flags.active != 0) == (marking.active != 0)) {
        console.print("Configuration #%u '%s' is already %s!\r\n", number, name.text().c_str(),
                      marking.already);
        return;
    }
    console.print("%s configuration #%u '%s' [y/n]? ", marking.capital_verb, number,
                  name.text().c_str());
    if (is_confirmed() &&
        succeeded(attempt_set_flags(number, {.active = marking.active, .valid = flags.valid})))
        console.print("Configuration #%u '%s' %s\r\n", number, name.text().c_str(), marking.done);
}

void mark_all(const Marking& marking)
{
    progress("Getting list of active configurations:\r\n"); // said by both, whatever they look for
    console.print("%s all configurations [y/n]? ", marking.capital_verb);
    if (is_confirmed())
        run(marking.all);
}

void mark(const Marking& marking, const Given& given)
{
    if (given.has_number)
        mark_one(marking, given.number);
    else
        mark_all(marking);
}

// ---- Wiping out ----

Failure attempt_wipe_out(unsigned number)
{
    const ConfigRecord no_data = {};
    Failure failed = attempt(LIB(SetConfigData), set_index(number), &no_data);
    if (!failed)
        failed = attempt_set_name(number, {});
    return failed ? failed : attempt_set_flags(number, {});
}

void wipe_out_one(unsigned number)
{
    const KeysOfItsOwn keys;
    progress("Wiping out configuration #%u:\r\n", number);
    constexpr std::array looked_at = {LIB(GetConfigFlags).row, LIB(GetConfigName).row};
    if (!succeeded(first_missing(looked_at)) ||
        !succeeded(first_missing(functions_that_fill_a_set)))
        return;
    SetFlags flags;
    if (!read_flags(number, flags))
        return;
    ConfigName name;
    if (attempt_get_name(number, name)) {
        report_error(
            Failure{"COM_ZELOP7UK_GetConfigName"}); // kept: no library has a function of that name
        return;
    }
    if (flags.valid != 0) { // otherwise there is nothing to lose
        console.print("Wipe out the configuration #%u '%s' [y/n]? ", number, name.text().c_str());
        if (!is_confirmed())
            return;
    }
    if (succeeded_below(attempt_wipe_out(number)))
        console.print("Configuration #%u '%s' wiped out\r\n", number, name.text().c_str());
}

void wipe_out_all()
{
    if (!succeeded(first_missing(functions_that_fill_a_set)))
        return;
    console.print("Wipe out all configurations [y/n]? ");
    if (!is_confirmed())
        return;
    console.print(
        "All configuration data will be deleted and cannot be restored, continue [y/n]? ");
    if (!is_confirmed())
        return;
    console.print("Wiping out configuration #");
    const Place counter = console.place();
    for (unsigned number = 1; number <= highest_set_number; ++number) {
        if (interrupted_before(number))
            return;
        console.move_to(counter);
        console.print("%u", number);
        console.flush_when_due();
        if (!succeeded_below(attempt_wipe_out(number)))
            return;
    }
    console.clear_line();
    console.print("All configurations were wiped out\r\n");
}

} // namespace

void copy_current_configuration(const Given& given)
{
    if (given.capital)
        save_current_configuration_to_set(given.number);
    else
        load_current_configuration_from_set(given.number);
}

void set_name_of_set(const Given& given)
{
    progress("Setting name of configuration #%u:\r\n", given.number);
    if (has_name(given.number) &&
        succeeded(attempt_set_name(given.number, config_name(given.text))))
        console.print("Name of configuration #%u set to '%s'\r\n", given.number,
                      printable(given.text).c_str()); // as given, also when it was cut
}

void show_name_of_set(const Given& given)
{
    progress("Getting name of configuration #%u:\r\n", given.number);
    ConfigName name;
    if (has_name(given.number) && read_name(given.number, name))
        console.print("Name of configuration #%u: '%s'\r\n", given.number, name.text().c_str());
}

void delete_sets(const Given& given)
{
    mark(deleting, given);
}

void undelete_sets(const Given& given)
{
    mark(undeleting, given);
}

void wipe_out_sets(const Given& given)
{
    if (given.has_number)
        wipe_out_one(given.number);
    else
        wipe_out_all();
}

void list_sets(const Given& given)
{
    if (given.capital) {
        progress("Getting list of deleted configurations:\r\n");
        run({0, true, "Deleted configurations", no_deleted});
    } else {
        progress("Getting list of active configurations:\r\n");
        run({1, false, "Active configurations", no_active}); // also what is not valid
    }
}
