/// What the user sees when a call of the device library fails. A report asks the library for the
/// texts of its last call, so no other library call may stand between a failure and its report.
#pragma once

#include "frame/failure.h"

#include <string>

/// The library's texts about its last failure, fit for a line.
struct LibraryMessages {
    std::string error, io_state, comm_error;

    bool operator==(const LibraryMessages&) const = default;
};

/// Asks for them in a fixed order: the codes first, because the texts belong to them.
[[nodiscard]] LibraryMessages library_messages();

/// Reports the failure of the function of that name below what is on the console.
void report_error(Failure failed);

/// The same in a line of its own when something stands in the cursor's.
void report_error_below(Failure failed);

/// Notes the first failure that is reported while it exists, for somebody who names the cause
/// later. There is one at a time.
class FirstFailure
{
public:
    FirstFailure();
    ~FirstFailure();
    FirstFailure(const FirstFailure&) = delete;
    FirstFailure& operator=(const FirstFailure&) = delete;

    [[nodiscard]] bool is_noted() const { return !function_.empty(); }
    [[nodiscard]] const std::string& function() const { return function_; }
    /// What the library said, fit for a line.
    [[nodiscard]] const std::string& message() const { return message_; }

    void note(const char* function, const std::string& message);

private:
    std::string function_, message_;
};

/// Reports unless `failed` is null, and tells whether it was.
[[nodiscard]] inline bool succeeded(Failure failed)
{
    if (failed)
        report_error(failed);
    return !failed;
}
