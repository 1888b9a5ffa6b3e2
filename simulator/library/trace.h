/// The library's own trace: a text file with one line a call.
#pragma once

#include "simulator/library/call_record.h"

namespace simulator
{

/// Starts a new trace, ending one that runs. False when the file cannot be opened.
[[nodiscard]] bool open_trace(const char* file_name);

/// Ends the trace; false when not all of it could be written. True without a trace.
bool close_trace();

[[nodiscard]] bool trace_is_open();

/// Adds the line of a finished call: local time, function, inputs, results or the error.
void trace_call(const CallRecord& call);

} // namespace simulator
