/// The journal of library calls: JSON Lines, valid UTF-8. What its lines are called, for who writes
/// and who reads it.
///
/// The first line tells who called: schema version, program, arguments, library, time. Then a line
/// a call, in the order in which they returned; identical polls in a row share a line. The last
/// line tells the end and the totals; it is missing when the program was killed.
///
/// Texts are as the device sent them: as a string where that is valid UTF-8, else as an object
/// whose only member `latin1` has a character for each byte. Real numbers read back as the same
/// number; what is none is one of the texts of `no_numbers`. Bytes are pairs of hexadecimal digits.
#pragma once

#include <array>
#include <string_view>

namespace journal
{

/// Of the lines described here. A reader takes no other.
inline constexpr int schema_version = 1;

namespace field
{
// The first line.
inline constexpr std::string_view schema = "kov_journal";
inline constexpr std::string_view program = "program";
inline constexpr std::string_view arguments = "arguments"; ///< array of texts
inline constexpr std::string_view library = "library";
inline constexpr std::string_view library_version =
    "library_version"; ///< word, major in the high byte
inline constexpr std::string_view system = "system";
inline constexpr std::string_view process = "process"; ///< its id
inline constexpr std::string_view time = "time";       ///< also of a call: when it began

// A call.
inline constexpr std::string_view number = "n"; ///< from 1; of the first of several
inline constexpr std::string_view duration = "us";
inline constexpr std::string_view count =
    "count"; ///< several: how many; their durations are summed up
inline constexpr std::string_view last = "last";       ///< several: when the last one began
inline constexpr std::string_view longest = "max_us";  ///< several
inline constexpr std::string_view function = "call";   ///< without the prefix that all share
inline constexpr std::string_view inputs = "in";       ///< object, by the names of the interface
inline constexpr std::string_view status = "status";   ///< of a function that has one
inline constexpr std::string_view outputs = "out";     ///< object; missing after a failure
inline constexpr std::string_view version = "version"; ///< what GetSWVersion returns
inline constexpr std::string_view text = "text";       ///< what a function returns; may be null
inline constexpr std::string_view error = "error";     ///< after a failure: the library's text
inline constexpr std::string_view missing = "missing"; ///< true: the library has no such function

// The last line.
inline constexpr std::string_view end = "end"; ///< when
inline constexpr std::string_view calls = "calls";
inline constexpr std::string_view failures = "failures";

// Of a text that is no valid UTF-8.
inline constexpr std::string_view latin1 = "latin1";
} // namespace field

/// By their index: bit 0 = negative, bit 1 = infinite.
inline constexpr std::array<std::string_view, 4> no_numbers = {"nan", "-nan", "inf", "-inf"};

/// What tells the two libraries what to do.
namespace variable
{
inline constexpr const char* journal = "KOV_JOURNAL"; ///< the file that the tap writes
/// Bytes that `kov` has written to it: the first line.
inline constexpr const char* journal_begun = "KOV_JOURNAL_BEGUN";
inline constexpr const char* real_library = "KOV_TAP_LIBRARY"; ///< to which the tap passes calls on
inline constexpr const char* replayed = "KOV_REPLAY";          ///< the file that is replayed
inline constexpr const char* in_real_time = "KOV_REPLAY_REALTIME";
} // namespace variable

/// Exit status of a program whose calls differ from the journal.
inline constexpr int diverged_status = 120;

} // namespace journal
