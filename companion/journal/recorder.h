/// Passes calls on to the real library and writes them to a journal.
#pragma once

#include "companion/journal/writer.h"

#include <functional>
#include <mutex>
#include <string>

namespace journal
{

/// The clocks that a journal is written and replayed by.
struct Clock {
    Moment (*now)();
    std::int64_t (*steady_us)(); ///< never steps
    void (*rest_us)(std::int64_t microseconds);
};

/// Takes a whole line; false when it could not be written, and none will be any more.
using WriteLine = std::function<bool(std::string_view line)>;

/// May be used by several threads at once.
class Recorder
{
public:
    Recorder(const Clock& clock, WriteLine write) : clock_{clock}, write_{std::move(write)} {}

    /// Calls the real function and notes the call. Null: the library has none; the call fails.
    /// `error_message` is the real library's GetErrorMessage, which may be null, too.
    Returned pass_on(const Call& call, LibraryFunctionPointer function,
                     LibraryFunctionPointer error_message);

    /// Writes what is kept back, and the last line.
    void finish();

private:
    /// Identical polls in a row.
    struct Run {
        std::string content; ///< of the line: function, inputs, results
        std::size_t inputs_size = 0;
        std::uint64_t first_number = 0, count = 0; ///< 0 = there is none
        Moment first, last;
        std::int64_t start_us = 0; ///< of the first, by the clock that never steps
        std::int64_t us = 0, longest_us = 0;
    };

    void begin(const std::string& inputs);
    void note(const Call& call, Returned& returned, LibraryFunctionPointer function,
              LibraryFunctionPointer error_message, Run&& noted);
    void add(Run&& call, bool is_poll);
    void write_run();

    const Clock clock_;
    const WriteLine write_;
    std::mutex mutex_;
    Run run_;
    Totals totals_;
    bool good_ = true;
    bool lacked_last_ = false; ///< the last call was of a function that the library lacks
    bool library_traces_ = false;
};

} // namespace journal
