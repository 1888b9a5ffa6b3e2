/// Journals as the commands open them.
#pragma once

#include "companion/journal/reading/reader.h"
#include "companion/output.h"

#include <functional>
#include <string>

namespace companion
{

/// Reads a journal and hands on what it holds. False, with a message, when it cannot be read or is
/// not sound; what stands before the fault has been handed on. A torn end is none.
[[nodiscard]] bool read_journal(const std::string& file, const Surroundings& outside,
                                const std::function<void(const journal::Heading&)>& take_heading,
                                const std::function<void(const journal::RecordedCall&)>& take_call,
                                const std::function<void(const journal::Reader&)>& take_end);

/// Whether all of it can be read; else a message tells why not.
[[nodiscard]] bool is_sound_journal(const std::string& file, const Surroundings& outside);

} // namespace companion
