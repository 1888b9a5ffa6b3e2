/// The functions of the device library as we offer them: whatever a function is, its call becomes a
/// Call that somebody answers.
#pragma once

#include "companion/journal/call.h"

#include <array>
#include <tuple>
#include <type_traits>

namespace journal
{

/// Answers a call. Each of our libraries has its own.
Returned answer(const Call& call);

template <class T>
Argument argument_of(const T& parameter)
{
    if constexpr (!std::is_pointer_v<T>)
        return {&parameter, nullptr};
    else if constexpr (std::is_const_v<std::remove_pointer_t<T>>)
        return {parameter, nullptr};
    else
        return {parameter, parameter};
}

template <class Result>
auto& result_in(Returned& returned)
{
    if constexpr (std::is_same_v<Result, std::int32_t>)
        return returned.status;
    else if constexpr (std::is_same_v<Result, std::uint16_t>)
        return returned.version;
    else
        return returned.text;
}

template <std::size_t row, class Function>
struct Entry;

/// The function of a row of the table, which is of this type.
template <std::size_t row, class Result, class... Parameters>
struct Entry<row, Result (*)(Parameters...)> {
    static_assert(row != devlib::no_function, "the table has no such function");
    static_assert(devlib::parameters_match<Parameters...>(devlib::functions[row]),
                  "the parameters differ from the function's row in the table");
    using Given = std::tuple<Parameters...>;

    static Result call(Parameters... parameters)
    {
        const Given given{parameters...};
        const auto arguments = std::apply(
            [](const auto&... parameter) {
                return std::array<Argument, sizeof...(Parameters)>{argument_of(parameter)...};
            },
            given);
        Returned returned = answer({row, arguments, forward, &given});
        return result_in<Result>(returned);
    }

private:
    static Returned forward(LibraryFunctionPointer function, const void* parameters)
    {
        Returned returned;
        result_in<Result>(returned) =
            std::apply(reinterpret_cast<Result (*)(Parameters...)>(function),
                       *static_cast<const Given*>(parameters));
        return returned;
    }
};

} // namespace journal
