#include "simulator/library/errors.h"

#include <array>
#include <cstdio>
#include <iterator>

namespace simulator
{

namespace
{

constexpr const char* io_state_texts[] = {
    "no error", "port not open",   "port already open", "port not available",
    "time-out", "request refused", "file error",
};

constexpr const char* comm_error_texts[] = {
    "no error",      "receive time-out",       "access denied", "device does not exist",
    "framing error", "receive buffer overrun",
};

struct FailureText {
    std::uint32_t io_state;
    std::uint32_t comm_error;
    const char* text;
};

/// In the order of Failure.
constexpr FailureText failure_texts[] = {
    {0, 0, "no error"},
    {1, 0, "the port is not open"},
    {2, 0, "the port is already open"},
    {3, 3, "there is no such port"},
    {3, 2, "the port is used by another program"},
    {6, 0, "wrong line in the scenario file"},
    {6, 0, "the state of the instrument cannot be kept"},
    {4, 1, "no answer from the device"},
    {5, 0, "wrong module address"},
    {5, 0, "value refused by the device"},
    {6, 0, "the debug file cannot be written"},
};

struct LastError {
    std::string text = failure_texts[0].text;
    std::string wording;
    std::uint32_t io_state = 0;
    std::uint32_t comm_error = 0;
};

LastError last;

/// Room for the text of a code that nobody knows.
struct UnknownCode {
    std::array<char, 48> text{};

    const char* name(const char* kind, std::uint32_t code)
    {
        std::snprintf(text.data(), text.size(), "unknown %s %lu", kind,
                      static_cast<unsigned long>(code));
        return text.data();
    }
};

UnknownCode unknown_io_state;
UnknownCode unknown_comm_error;

} // namespace

void explain(std::string text)
{
    last.wording = std::move(text);
}

std::int32_t report_failure(Failure failure)
{
    const FailureText& known = failure_texts[static_cast<std::size_t>(failure)];
    last.text = last.wording.empty() ? known.text : last.wording;
    last.wording.clear();
    last.io_state = known.io_state;
    last.comm_error = known.comm_error;
    return -static_cast<std::int32_t>(failure);
}

const char* last_error_text()
{
    return last.text.c_str();
}

std::uint32_t last_io_state()
{
    return last.io_state;
}

std::uint32_t last_comm_error()
{
    return last.comm_error;
}

const char* io_state_text(std::uint32_t state)
{
    return state < std::size(io_state_texts) ? io_state_texts[state]
                                             : unknown_io_state.name("I/O state", state);
}

const char* comm_error_text(std::uint32_t error)
{
    return error < std::size(comm_error_texts)
               ? comm_error_texts[error]
               : unknown_comm_error.name("communication error", error);
}

void forget_errors()
{
    last = LastError{};
}

} // namespace simulator
