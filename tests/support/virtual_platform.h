/// The platform of the unit tests: a terminal (or a pipe) that records what it gets, a keyboard
/// that types by the clock, and signals at set times. Its clock is virtual: it moves only when the
/// program waits or the instrument takes time to answer.
#pragma once

#include "devlib/functions.h"
#include "frame/platform/platform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>

struct TypedKeys {
    std::int64_t at_ms;
    std::string bytes;
};

struct RaisedSignal {
    std::int64_t at_ms;
    int number;
};

struct WindowEvent {
    std::int64_t at_ms;
    platform::WindowChange change;
    platform::WindowSize size;
};

/// A device library: its functions in the order of the table.
using OfferedLibrary = std::array<platform::LibraryFunctionPointer, devlib::function_count>;

struct VirtualPlatform {
    bool output_is_terminal = true;
    bool input_is_terminal = true; ///< a pipe ends after the last typed keys
    platform::WindowSize size{.columns = 160, .rows = 150};
    std::deque<TypedKeys> typed; ///< in the order of their times; what is over is taken out
    std::deque<RaisedSignal> signals;
    std::deque<WindowEvent> window_events;
    std::map<std::string, std::string> environment;
    platform::LibraryFailure library_failure; ///< what the device library is refused for
    std::set<std::string> missing_functions;  ///< full names of those that it lacks
    const OfferedLibrary* library = nullptr;  ///< null = the functions that the test is linked to
    bool output_is_closed = false;
    std::size_t output_room = std::string::npos; ///< bytes that it takes without a wait

    // What the program did.
    bool run_is_protected = false;
    std::string output;
    std::size_t writes = 0;
    int stores = 0; ///< times that a file had to reach the disk
};

extern VirtualPlatform virtual_platform;

/// A fresh platform at the start of time.
void reset_virtual_platform();
