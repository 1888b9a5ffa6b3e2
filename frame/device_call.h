/// Calling the device library. Function and name travel together, so a report can never name the
/// wrong one:
///
///     std::uint8_t enabled = 0;
///     if (!call(LIB(GetEnable), &enabled))
///         return; // has been reported
///
/// Out-parameters are zeroed before each try. A pointer to a variable is one; so is a pointer to a
/// std::array, which the library sees as its first element, and a pointer to a DeviceText. What
/// the library both reads and writes goes in as in_out(&variable); a pointer to const is an input.
#pragma once

#include "devlib/COM-KOV-CTRL.h"
#include "frame/device_library.h"
#include "frame/error_report.h"
#include "frame/platform/current_call.h"
#include "frame/text/format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

template <class Function>
struct LibraryFunction {
    std::size_t row = devlib::no_function; ///< in the table of functions

    /// Null when the library lacks it.
    [[nodiscard]] Function* function() const
    {
        return reinterpret_cast<Function*>(library_functions[row]);
    }
    /// With the library's prefix.
    [[nodiscard]] const char* name() const { return devlib::function_names[row].text; }
};

namespace device_call
{

template <std::size_t row, class Result, class... Parameters>
consteval LibraryFunction<Result(Parameters...)> in_table(Result (*)(Parameters...))
{
    static_assert(row != devlib::no_function, "the table has no such function");
    static_assert(devlib::parameters_match<Parameters...>(devlib::functions[row]),
                  "the parameters differ from the function's row in the table");
    return {row};
}

} // namespace device_call

/// A function of the device library with its name: LIB(GetState) is COM_KOV_CTRL_GetState.
#define LIB(function)                                                                              \
    device_call::in_table<devlib::find_function(#function)>(                                       \
        static_cast<decltype(&COM_KOV_CTRL_##function)>(nullptr))

/// A text that the library writes into a field of `size` bytes, terminated whatever it writes.
template <std::size_t size>
struct DeviceText {
    std::array<char, size + 1> bytes{};

    /// Fit for a line: control characters are escaped.
    [[nodiscard]] std::string text() const { return printable(bytes.data()); }
};

/// The fields of the identification texts, as the library defines them.
using ProductIdText = DeviceText<84>;
using FirmwareDateText = DeviceText<12>;

/// A flag of each configuration set: the room that the library asks for, which is more than there
/// are sets.
using ConfigFlagList = std::array<std::uint8_t, 1024>;

template <class T>
struct InOut {
    T* variable;
};

/// Marks a variable that the library reads before it writes it.
template <class T>
[[nodiscard]] InOut<T> in_out(T* variable)
{
    return {variable};
}

namespace device_call
{

// What the library gets for each kind of argument, cleared where it is a result.
template <class T>
T prepare(T input)
{
    static_assert(std::is_arithmetic_v<T>);
    return input;
}

template <class T>
const T* prepare(const T* input)
{
    return input;
}

template <class T>
T* prepare(T* result)
{
    *result = T{};
    return result;
}

template <class T, std::size_t count>
T* prepare(std::array<T, count>* results)
{
    results->fill(T{});
    return results->data();
}

template <std::size_t size>
char* prepare(DeviceText<size>* text)
{
    text->bytes.fill('\0');
    return text->bytes.data();
}

template <class T>
T* prepare(InOut<T> argument)
{
    return argument.variable;
}

} // namespace device_call

/// What a function gives back that has no status: a version, a text. 0 or null when the library
/// lacks it.
template <class Result, class... Parameters, class... Arguments>
[[nodiscard]] Result ask(LibraryFunction<Result(Parameters...)> lib, Arguments... arguments)
{
    const auto function = lib.function();
    const platform::CallInProgress noted{lib.name()};
    return function != nullptr ? function(arguments...) : Result{};
}

/// Calls the function once.
template <class Function, class... Arguments>
[[nodiscard]] Failure attempt(LibraryFunction<Function> lib, Arguments... arguments)
{
    const auto function = lib.function();
    last_call_was_made = function != nullptr;
    if (function == nullptr)
        return Failure{lib.name()};
    const platform::CallInProgress noted{lib.name()};
    return function(device_call::prepare(arguments)...) == 0 ? Failure{} : Failure{lib.name()};
}

/// Makes an attempt, and once more when it fails.
template <class Attempt>
[[nodiscard]] Failure with_repeat(Attempt attempt_once)
{
    return attempt_once() ? attempt_once() : Failure{};
}

/// As attempt(), but a call that fails is made once more.
template <class Function, class... Arguments>
[[nodiscard]] Failure attempt_twice(LibraryFunction<Function> lib, Arguments... arguments)
{
    return with_repeat([&] { return attempt(lib, arguments...); });
}

/// Calls the function once; a failure has been reported when this returns false.
template <class Function, class... Arguments>
[[nodiscard]] bool call(LibraryFunction<Function> lib, Arguments... arguments)
{
    return succeeded(attempt(lib, arguments...));
}

/// As call(), but a call that fails is made once more: the rule for commands that read or set one
/// thing of a module.
template <class Function, class... Arguments>
[[nodiscard]] bool call_twice(LibraryFunction<Function> lib, Arguments... arguments)
{
    return succeeded(attempt_twice(lib, arguments...));
}
