/// The shape of every command on one module or on all of them: one line for the module, or a
/// heading and a line for each slot with a module in it, then for the base unit.
///
///     for_one_or_all(
///         {.progress = "Getting product number of ",
///          .label = "Product number of ",
///          .heading = "Product numbers:"},
///         given.address, [](const Module& module) {
///             std::int32_t number = 0;
///             if (!call_twice(LIB(GetModuleProductNo), module.address, &number))
///                 return false;
///             module.print_label();
///             console.print(Color::value, "%d", number);
///             return true;
///         });
#pragma once

#include "frame/switches.h"
#include "instrument/addresses.h"

#include <functional>
#include <string>

/// What differs between the commands.
struct ModuleTexts {
    const char* progress;          ///< begins the progress line; the name follows
    const char* label;             ///< begins the line of a single module; the name follows
    const char* label_end = ": ";  ///< stands behind that name
    const char* heading;           ///< stands over the lines of all modules
    const char* slot_end = ":  ";  ///< stands behind a slot's number
    bool all_has_base_unit = true; ///< "all" includes the base unit
    bool failure_ends_all = false; ///< the first failing slot ends the list
};

/// One module whose turn it is.
struct Module {
    unsigned address;
    bool in_list;     ///< as one of all, not alone
    std::string name; ///< its own, or that of all modules
    const ModuleTexts& texts;

    /// Begins its line.
    void print_label() const;
};

/// Does the work for one module: prints its line without the line's end. False when that failed,
/// which it has reported.
using ModuleRoutine = std::function<bool(const Module&)>;

/// Runs a command on the module at an address, or on all_modules. A slot that fails does not keep
/// the next one from its turn (unless the texts say so); a failing base unit stands last anyway.
void for_one_or_all(const ModuleTexts& texts, unsigned address, const ModuleRoutine& routine);

/// A command's routine for the base unit, whatever address was given.
template <Routine routine>
void of_base_unit(const Given& given)
{
    Given of_base = given;
    of_base.address = base_unit;
    routine(of_base);
}
