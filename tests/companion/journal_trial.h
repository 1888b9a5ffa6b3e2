/// Runs of the program in process whose library calls are written to a journal, or answered by one.
#pragma once

#include "companion/journal/player.h"
#include "companion/journal/recorder.h"
#include "tests/support/temporary_file.h"
#include "tests/support/virtual_platform.h"

#include <memory>
#include <string>

/// The library's functions as the tap and the replay offer them.
extern const OfferedLibrary& journal_entries;

/// Everything that is called through these is written to a journal, by the virtual clock.
class TappedCalls
{
public:
    TappedCalls();
    ~TappedCalls();
    TappedCalls(const TappedCalls&) = delete;
    TappedCalls& operator=(const TappedCalls&) = delete;

    /// The whole journal: nothing may be called any more.
    [[nodiscard]] std::string journal();

private:
    std::string text_;
    journal::Recorder recorder_;
};

/// Everything that is called through these is answered by a journal, in its times.
class ReplayedCalls
{
public:
    explicit ReplayedCalls(const std::string& journal);
    ~ReplayedCalls();
    ReplayedCalls(const ReplayedCalls&) = delete;
    ReplayedCalls& operator=(const ReplayedCalls&) = delete;

    /// What differed first, or what was left; empty when all was as in the journal.
    [[nodiscard]] std::string difference();

private:
    TemporaryFile name_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    journal::Player player_;
    std::string difference_;
};
