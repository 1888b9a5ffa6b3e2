/// Composes the lines of a journal. They end without a line end unless said otherwise.
#pragma once

#include "companion/journal/call.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace journal
{

/// A moment of the wall clock.
struct Moment {
    std::int64_t us = 0;    ///< since 1970-01-01 00:00 UTC
    int offset_minutes = 0; ///< of the local time
};

/// "2026-03-14T09:26:53.589000+01:00"
[[nodiscard]] std::string time_text(Moment moment);

struct Beginning {
    std::vector<std::string> command_line; ///< the program's name first
    std::string library;
    std::uint16_t library_version = 0;
    std::uint64_t process = 0;
    Moment time;
};

/// The first line, with its line end.
[[nodiscard]] std::string first_line(const Beginning& beginning);

struct Totals {
    std::uint64_t calls = 0, failures = 0;
    std::int64_t us = 0; ///< spent in the library
};

/// The last line, with its line end.
[[nodiscard]] std::string last_line(Moment time, const Totals& totals);

/// "journal-COM3-2026-03-14-092653.jsonl"; the port is the program's first argument. Without the
/// port where that is none.
[[nodiscard]] std::string default_name(const std::vector<std::string>& command_line, Moment time);

/// "name":
void append_name(std::string& line, std::string_view name);

void append_text(std::string& line, std::string_view text);

/// "call":"GetModuleState","in":{"address":1}
void append_inputs(std::string& line, const Call& call);

/// "status":0,"out":{"state":5} - what stands there now, or what was returned.
void append_results(std::string& line, const Call& call, const Returned& returned);

} // namespace journal
