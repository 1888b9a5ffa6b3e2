#include "simulator/library/call.h"

#include "simulator/host.h"
#include "simulator/library/trace.h"
#include "simulator/scenario/injection.h"
#include "simulator/scenario/scenario.h"
#include "simulator/scenario/value.h"
#include "simulator/session.h"

#include <cstring>

namespace simulator
{

namespace
{

std::function<void(const CallRecord&)> observer;

/// The inputs of the running call as the trace shows them, noted before the call may change them.
std::string noted_inputs;

bool recorded()
{
    return trace_is_open() || static_cast<bool>(observer);
}

std::size_t element_count(const Parameter& parameter, const Argument& argument)
{
    if (argument.count > 0 || parameter.kind == Kind::bytes)
        return parameter.count > 0 ? parameter.count : argument.count;
    if (parameter.kind == Kind::text && parameter.count == 0)
        return std::strlen(static_cast<const char*>(argument.value));
    return parameter.count;
}

std::string shown_inputs(const FunctionInfo& function, std::span<const Argument> arguments)
{
    std::string line;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Parameter& parameter = function.parameters[i];
        if (parameter.way == Way::out)
            continue;
        if (!line.empty())
            line += ", ";
        append_value(line, parameter, arguments[i].value, element_count(parameter, arguments[i]));
    }
    return line;
}

std::string shown_outputs(const FunctionInfo& function, std::span<const Argument> arguments)
{
    std::string line;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Parameter& parameter = function.parameters[i];
        if (parameter.way == Way::in)
            continue;
        if (!line.empty())
            line += ", ";
        line += std::string_view(parameter.name);
        line += '=';
        append_value(line, parameter, arguments[i].target, element_count(parameter, arguments[i]));
    }
    return line;
}

/// The first number that the caller gave: the address or index that a scenario line may name.
std::uint32_t key_of(const FunctionInfo& function, std::span<const Argument> arguments)
{
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (function.parameters[i].way != Way::in)
            continue;
        if (function.parameters[i].kind == Kind::u32)
            return *static_cast<const std::uint32_t*>(arguments[i].value);
        if (function.parameters[i].kind == Kind::u16)
            return *static_cast<const std::uint16_t*>(arguments[i].value);
        if (function.parameters[i].kind == Kind::u8)
            return *static_cast<const std::uint8_t*>(arguments[i].value);
    }
    return 0;
}

void record(const FunctionInfo& function, std::string outputs, std::int32_t status)
{
    const CallRecord call{function.full_name.text, std::move(noted_inputs), std::move(outputs),
                          status};
    noted_inputs.clear();
    trace_call(call);
    if (observer)
        observer(call);
}

} // namespace

void take_time_us(std::int64_t microseconds)
{
    host::let_time_pass_us(microseconds);
}

void take_transfer_time_us(std::int64_t microseconds)
{
    if (the_instrument().physical.answer_time_us > 0)
        host::let_time_pass_us(microseconds);
}

void reset_calls()
{
    observer = nullptr;
    noted_inputs.clear();
    remove_injections();
    close_trace();
    forget_errors();
}

void set_observer(std::function<void(const CallRecord&)> new_observer)
{
    observer = std::move(new_observer);
}

namespace call_steps
{

Failure begin(std::size_t index, std::span<const Argument> arguments)
{
    load_scenario_once();
    apply_due_lines();
    const FunctionInfo& function = functions[index];
    if (recorded() || index == find_function("OpenDebugFile")) // the first line of a trace
        noted_inputs = shown_inputs(function, arguments);
    const std::uint32_t key = key_of(function, arguments);
    std::string text;
    const bool fails = take_fault(index, key, host::monotonic_us(), text);
    std::int64_t wait_us = take_block_us(index, key);
    if (function.reach == Reach::device && !port_is_open())
        return Failure::not_open;
    if (function.reach == Reach::device)
        wait_us += the_instrument().physical.answer_time_us;
    if (wait_us > 0)
        host::let_time_pass_us(wait_us);
    if (!fails)
        return Failure::none;
    if (!text.empty())
        explain(std::move(text));
    return Failure::no_answer;
}

std::int32_t end(std::size_t index, std::span<const Argument> arguments, Failure failure)
{
    const FunctionInfo& function = functions[index];
    if (failure == Failure::none)
        failure = save_changes();
    if (failure == Failure::none)
        for (const ForcedResult& forced : take_replies(index, key_of(function, arguments)))
            write_value(
                *forced.value, function.parameters[forced.parameter],
                arguments[forced.parameter].target,
                element_count(function.parameters[forced.parameter], arguments[forced.parameter]),
                forced.element);
    std::int32_t status = 0;
    if (failure != Failure::none)
        status = function.reach == Reach::report ? -1 : report_failure(failure);
    if (recorded())
        record(function, status == 0 ? shown_outputs(function, arguments) : "", status);
    return status;
}

const char* end_with_text(std::size_t index, std::span<const Argument> arguments, const char* text)
{
    const FunctionInfo& function = functions[index];
    for (const ForcedResult& forced : take_replies(index, key_of(function, arguments)))
        text = forced.value->type == Value::Type::null ? nullptr : forced.value->text.c_str();
    if (recorded()) {
        std::string outputs = "text=";
        if (text == nullptr)
            outputs += "null";
        else
            append_quoted(outputs, text);
        record(function, std::move(outputs), 0);
    }
    return text;
}

std::uint16_t end_with_version(std::size_t index, std::uint16_t version)
{
    const FunctionInfo& function = functions[index];
    for (const ForcedResult& forced : take_replies(index, 0))
        version = static_cast<std::uint16_t>(forced.value->integer);
    if (recorded()) {
        std::string outputs = "version=";
        append_value(outputs, {"version", Kind::u16, Way::out, true}, &version, 1);
        record(function, std::move(outputs), 0);
    }
    return version;
}

} // namespace call_steps

} // namespace simulator
