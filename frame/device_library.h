/// The device library: where it was found, why it cannot be used, and its functions. It is looked
/// for and loaded when it is first needed.
#pragma once

#include "devlib/functions.h"
#include "frame/failure.h"
#include "frame/platform/platform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// What came of the search. The first place that holds something of the library's name decides:
/// what cannot be used there ends the search, so that the simulated instrument never answers in
/// the place of a real one.
struct DeviceLibrary {
    bool loaded = false;
    platform::LibraryPlace place =
        platform::LibraryPlace::simulator; ///< the one that decided; means nothing without a path
    std::string path;                      ///< the file that decided; empty when nothing was found
    std::string cause;                     ///< why it is not loaded, fit for a line: "it is empty"
    std::vector<const char*> missing;      ///< full names of the functions that it lacks

    /// What the library says of its version, major in the high byte; 0 when it does not.
    [[nodiscard]] std::uint16_t version() const;
};

/// Looks for the library and loads it, the first time. Prints nothing. `program` is the file of the
/// program whose library is looked for; empty = this one's.
const DeviceLibrary& device_library(const std::string& program = {});

/// The next call of device_library() looks again; until then there are no functions.
void forget_device_library();

/// As a call of the first of these functions (rows of the table) that the library lacks; a success
/// when all are there.
[[nodiscard]] Failure first_missing(std::span<const std::size_t> functions);

/// The functions in the order of the table. Null: the library lacks it, or none is loaded.
extern std::array<platform::LibraryFunctionPointer, devlib::function_count> library_functions;

/// False when the last call could not be made, because the library lacks the function.
extern bool last_call_was_made;
