/// The one way through which every function of the library runs.
///
/// A function names itself, hands over its parameters in the order of the interface and says what
/// it does; everything that all functions share happens here: the check that a port is open, faults
/// and forced replies, the answer time, the trace, the observer, the texts of the last error, the
/// saving of a changed state.
#pragma once

#include "devlib/COM-KOV-CTRL.h"
#include "devlib/functions.h"
#include "simulator/library/call_record.h"
#include "simulator/library/errors.h"
#include "simulator/model/the_instrument.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <type_traits>

namespace simulator
{

using namespace devlib;

/// The name of a function as a template argument.
template <std::size_t size>
struct Name {
    char text[size]{};
    consteval Name(const char (&name)[size]) { std::copy_n(name, size, text); }
    [[nodiscard]] constexpr std::string_view view() const { return {text, size - 1}; }
};

/// Where the value of one parameter stands during a call.
struct Argument {
    const void* value = nullptr; ///< what the caller gave, or where the result stands
    void* target = nullptr;      ///< where the result goes; null for an input
    std::size_t count = 0;       ///< elements, where only the call knows; else 0
};

/// Lets time pass that the instrument needs for a work of its own / that a transfer takes; the
/// latter is nothing where the answer time is 0.
void take_time_us(std::int64_t microseconds);
void take_transfer_time_us(std::int64_t microseconds);

/// Has `observer` called at the end of every call; an empty one ends it.
void set_observer(std::function<void(const CallRecord&)> observer);

/// Ends an observer, a trace and all that a scenario set; the next call reads the scenario again.
void reset_calls();

namespace call_steps
{
[[nodiscard]] Failure begin(std::size_t function, std::span<const Argument> arguments);
[[nodiscard]] std::int32_t end(std::size_t function, std::span<const Argument> arguments,
                               Failure failure);
/// The end of a call whose result comes back directly: the result or the forced one.
[[nodiscard]] const char* end_with_text(std::size_t function, std::span<const Argument> arguments,
                                        const char* text);
[[nodiscard]] std::uint16_t end_with_version(std::size_t function, std::uint16_t version);

/// How a parameter of the C interface is passed: by value, by pointer, or as a run of bytes.
template <typename T>
struct Passed {
    using Type = T;
    static Argument argument(const T& parameter)
    {
        constexpr bool pointer = std::is_pointer_v<T>;
        if constexpr (pointer && !std::is_const_v<std::remove_pointer_t<T>>)
            return {parameter, parameter, 0};
        else if constexpr (pointer)
            return {parameter, nullptr, 0};
        else
            return {&parameter, nullptr, 0};
    }
};

template <typename Byte>
struct Passed<std::span<Byte>> {
    using Type = Byte*;
    static Argument argument(const std::span<Byte>& parameter)
    {
        if constexpr (!std::is_const_v<Byte>)
            return {parameter.data(), parameter.data(), parameter.size()};
        else
            return {parameter.data(), nullptr, parameter.size()};
    }
};

template <typename Body, typename... Taken>
Failure run(const Body& body, Taken&... taken)
{
    if constexpr (std::is_void_v<decltype(body(taken...))>) {
        body(taken...);
        return Failure::none;
    } else {
        return body(taken...);
    }
}
} // namespace call_steps

/// Runs a function with a status. `body` gets the instrument as it is now, if it takes one, and
/// returns a Failure or nothing; it writes the results through the parameters it captured.
template <Name name, typename Body, typename... Parameters>
std::int32_t call(const Body& body, Parameters... parameters)
{
    constexpr std::size_t function = find_function(name.view());
    static_assert(function != no_function, "the table has no such function");
    static_assert(
        parameters_match<typename call_steps::Passed<Parameters>::Type...>(functions[function]),
        "the parameters differ from the function's row in the table");
    const std::array<Argument, sizeof...(Parameters)> arguments{
        call_steps::Passed<Parameters>::argument(parameters)...};
    Failure failure = call_steps::begin(function, arguments);
    if (failure == Failure::none) {
        if constexpr (std::is_invocable_v<Body, Instrument&>)
            failure = call_steps::run(body, instrument_now());
        else
            failure = call_steps::run(body);
    }
    return call_steps::end(function, arguments, failure);
}

/// Runs a function that returns a text.
template <Name name, typename Body, typename... Parameters>
const char* call_for_text(const Body& body, Parameters... parameters)
{
    constexpr std::size_t function = find_function(name.view());
    static_assert(function != no_function, "the table has no such function");
    static_assert(
        parameters_match<typename call_steps::Passed<Parameters>::Type...>(functions[function]),
        "the parameters differ from the function's row in the table");
    const std::array<Argument, sizeof...(Parameters)> arguments{
        call_steps::Passed<Parameters>::argument(parameters)...};
    (void)call_steps::begin(function, arguments); // never fails
    return call_steps::end_with_text(function, arguments, body());
}

} // namespace simulator
