#include "simulator/library/trace.h"

#include "simulator/host.h"
#include "simulator/library/errors.h"
#include "simulator/scenario/value.h"

#include <chrono>
#include <cstdio>

namespace simulator
{

namespace
{

std::FILE* file = nullptr;

std::string time_stamp()
{
    namespace c = std::chrono;
    const c::sys_time<c::milliseconds> now{c::milliseconds{host::local_wall_clock_ms()}};
    const auto day = c::floor<c::days>(now);
    const c::year_month_day date{day};
    const c::hh_mm_ss time{now - day};
    char text[40];
    std::snprintf(
        text, sizeof text, "%04d/%02u/%02u %02d:%02d:%02d.%03d", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    return text;
}

} // namespace

bool open_trace(const char* file_name)
{
    close_trace();
    file = host::open_file(file_name, "w");
    if (file == nullptr)
        return false;
    return true;
}

bool close_trace()
{
    if (file == nullptr)
        return true;
    const bool written = std::ferror(file) == 0;
    const bool closed = std::fclose(file) == 0;
    file = nullptr;
    return written && closed;
}

bool trace_is_open()
{
    return file != nullptr;
}

void trace_call(const CallRecord& call)
{
    if (file == nullptr)
        return;
    std::string line = time_stamp() + "  " + call.function + "(" + call.inputs + ")  ";
    if (call.status != 0) {
        line += "error " + std::to_string(call.status) + ": ";
        append_quoted(line, last_error_text());
    } else {
        line += call.outputs.empty() ? "OK" : call.outputs + "  OK";
    }
    line += '\n';
    std::fputs(line.c_str(), file);
    std::fflush(file); // the trace is whole up to the last call when the program dies
}

} // namespace simulator
