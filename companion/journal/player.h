/// Answers calls as a journal says.
#pragma once

#include "companion/journal/reading/reader.h"
#include "companion/journal/recorder.h"

#include <map>
#include <string>

namespace journal
{

class Player
{
public:
    /// The file stays open as long as the player lives; null: there is none. `in_real_time` lets
    /// the time of each call pass.
    Player(std::FILE* file, const Clock& clock, bool in_real_time);

    /// False when this is not the call that the journal has here: `difference` tells number,
    /// expected and actual.
    [[nodiscard]] bool answer(const Call& call, Returned& returned, std::string& difference);

    /// Which calls of the journal were not made, as a sentence; empty when all were.
    [[nodiscard]] std::string left();

private:
    [[nodiscard]] bool take_next();
    [[nodiscard]] std::string expected();
    [[nodiscard]] Returned give(const Call& call);
    void let_time_pass();

    Reader reader_;
    const Clock& clock_;
    const bool in_real_time_;
    RecordedCall current_;
    std::uint64_t answered_ = 0; ///< of the calls that share the current line
    std::uint64_t number_ = 0;   ///< of the last call
    /// What each function returned last: it belongs to the library.
    std::map<std::size_t, std::string> texts_;
};

} // namespace journal
