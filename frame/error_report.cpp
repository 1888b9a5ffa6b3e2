#include "frame/error_report.h"

#include "frame/device_call.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"

#include <cstdint>

namespace
{

FirstFailure* first_failure = nullptr; ///< who wants to know

}

FirstFailure::FirstFailure()
{
    first_failure = this;
}

FirstFailure::~FirstFailure()
{
    first_failure = nullptr;
}

void FirstFailure::note(const char* function, const std::string& message)
{
    if (is_noted())
        return;
    function_ = function;
    message_ = message;
}

LibraryMessages library_messages()
{
    const bool was_made = last_call_was_made;
    std::uint32_t comm_error = 0;
    std::uint32_t io_state = 0;
    // Their own failures are ignored: there is nothing better to show.
    (void)attempt(LIB(GetCommError), &comm_error);
    (void)attempt(LIB(GetIOState), &io_state);
    LibraryMessages messages;
    messages.error =
        was_made ? printable(ask(LIB(GetErrorMessage))) : "the device library has no such function";
    messages.io_state = printable(ask(LIB(GetIOStateMessage), io_state));
    messages.comm_error = printable(ask(LIB(GetCommErrorMessage), comm_error));
    return messages;
}

void report_error(Failure failed)
{
    const LibraryMessages messages = library_messages();
    if (first_failure != nullptr)
        first_failure->note(failed.function(), messages.error);
    // The full screen words it otherwise: ", Error at" and "communication stream error".
    console.print(Color::bad,
                  "%s: Error at %s: %s\r\nlast I/O error message: %s, "
                  "last communication port error: %s",
                  timestamp().c_str(), failed.function(), messages.error.c_str(),
                  messages.io_state.c_str(), messages.comm_error.c_str());
    console.print("\r\n");
}

void report_error_below(Failure failed)
{
    console.end_line();
    report_error(failed);
}
