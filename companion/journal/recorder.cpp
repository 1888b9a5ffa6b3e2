#include "companion/journal/recorder.h"

#include "companion/journal/format.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace journal
{

namespace
{

constexpr std::size_t open_trace = devlib::find_function("OpenDebugFile");
constexpr std::size_t close_trace = devlib::find_function("CloseDebugFile");
constexpr std::size_t get_error_message = devlib::find_function("GetErrorMessage");

/// As the utility says it of a function that it looks up in vain.
constexpr const char* no_function_text = "the device library has no such function";

/// Most lines are shorter: they take one piece of memory each.
constexpr std::size_t usual_line = 512;

/// Asks for something and changes nothing.
bool is_poll(const devlib::FunctionInfo& function)
{
    return function.name().starts_with("Get");
}

bool failed(const Call& call, const Returned& returned)
{
    return call.info().returns == devlib::Returns::status && returned.status != 0;
}

template <class T>
void add_number(std::string& line, std::string_view name, T number)
{
    append_name(line, name);
    line.append(std::to_string(number)).append(1, ',');
}

void add_time(std::string& line, std::string_view name, Moment moment)
{
    append_name(line, name);
    line.append(1, '"').append(time_text(moment)).append("\",");
}

} // namespace

Returned Recorder::pass_on(const Call& call, LibraryFunctionPointer function,
                           LibraryFunctionPointer error_message)
{
    Run noted;
    noted.content.reserve(usual_line);
    append_inputs(noted.content, call); // before the call changes what goes both ways
    noted.inputs_size = noted.content.size();
    begin(noted.content);
    noted.first = noted.last = clock_.now();
    noted.start_us = clock_.steady_us();
    Returned returned = {.status = -1};
    if (function != nullptr)
        returned = call.forward_to(function);
    const int its_errno = errno;
    noted.us = noted.longest_us = clock_.steady_us() - noted.start_us;
    note(call, returned, function, error_message, std::move(noted));
    errno = its_errno;
    return returned;
}

void Recorder::note(const Call& call, Returned& returned, LibraryFunctionPointer function,
                    LibraryFunctionPointer error_message, Run&& noted)
{
    const std::lock_guard lock{mutex_};
    if (call.row == get_error_message && lacked_last_)
        returned.text = no_function_text;
    lacked_last_ =
        function == nullptr || (lacked_last_ && call.info().reach == devlib::Reach::report);
    if (returned.status == 0 && (call.row == open_trace || call.row == close_trace))
        library_traces_ = call.row == open_trace;
    noted.content += ',';
    append_results(noted.content, call, returned);
    const char* text = function == nullptr ? no_function_text : nullptr;
    // Its trace tells the text itself, and shall be the same with us and without.
    if (failed(call, returned) && text == nullptr && error_message != nullptr && !library_traces_)
        text = reinterpret_cast<const char* (*)()>(error_message)();
    if (failed(call, returned) && text != nullptr) {
        noted.content += ',';
        append_name(noted.content, field::error);
        append_text(noted.content, text);
    }
    if (function == nullptr) {
        noted.content += ',';
        append_name(noted.content, field::missing);
        noted.content += "true";
    }
    ++totals_.calls;
    totals_.failures += failed(call, returned) ? 1U : 0U;
    totals_.us += noted.us;
    add(std::move(noted), is_poll(call.info()));
}

/// What was kept back is written before another call is made: should that one never return, the
/// journal tells what came before it.
void Recorder::begin(const std::string& inputs)
{
    const std::lock_guard lock{mutex_};
    if (std::string_view{run_.content}.substr(0, run_.inputs_size) != inputs)
        write_run();
}

void Recorder::add(Run&& call, bool poll)
{
    constexpr std::int64_t longest_run_us = 1'000'000;
    const bool goes_on = run_.count > 0 && run_.content == call.content &&
                         call.start_us - run_.start_us < longest_run_us;
    if (goes_on) {
        ++run_.count;
        run_.last = call.first;
        run_.us += call.us;
        run_.longest_us = std::max(run_.longest_us, call.us);
        return;
    }
    write_run();
    run_ = std::move(call);
    run_.first_number = totals_.calls;
    run_.count = 1;
    if (!poll)
        write_run();
}

void Recorder::write_run()
{
    const Run run = std::exchange(run_, {});
    if (run.count == 0 || !good_)
        return;
    std::string line;
    line.reserve(usual_line);
    line += '{';
    add_number(line, field::number, run.first_number);
    add_time(line, field::time, run.first);
    add_number(line, field::duration, run.us);
    if (run.count > 1) {
        add_number(line, field::count, run.count);
        add_time(line, field::last, run.last);
        add_number(line, field::longest, run.longest_us);
    }
    good_ = write_(line.append(run.content).append("}\n"));
}

void Recorder::finish()
{
    // A thread that the end of the process caught in a call may never let go.
    const std::unique_lock lock{mutex_, std::try_to_lock};
    if (!lock.owns_lock())
        return;
    write_run();
    if (good_)
        good_ = write_(last_line(clock_.now(), totals_));
}

} // namespace journal
