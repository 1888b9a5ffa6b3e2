/// A call of the device library on its way through one of our libraries, whatever its function.
#pragma once

#include "devlib/functions.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace journal
{

/// Where the value of one parameter stands.
struct Argument {
    const void* value = nullptr; ///< what the caller gave, or where the result stands
    void* target = nullptr;      ///< where the result goes; null for an input
};

/// What a function gives back; which member means something, its row says.
struct Returned {
    std::int32_t status = 0;
    std::uint16_t version = 0;
    const char* text = nullptr;
};

using LibraryFunctionPointer = void (*)();

struct Call {
    std::size_t row; ///< of the table of functions
    std::span<const Argument> arguments;
    /// Calls a function of this type with these parameters.
    Returned (*forward)(LibraryFunctionPointer function, const void* parameters);
    const void* parameters;

    [[nodiscard]] const devlib::FunctionInfo& info() const { return devlib::functions[row]; }
    [[nodiscard]] Returned forward_to(LibraryFunctionPointer function) const
    {
        return forward(function, parameters);
    }
};

/// More bytes than this are not read from a program: no device has as much memory, so the count is
/// a mistake, which the library refuses, and so many bytes need not be there.
inline constexpr std::size_t most_input_bytes = 1 << 19;

/// Elements of an array, bytes of a text or of a run of bytes, as they stand there now.
[[nodiscard]] std::size_t element_count(const Call& call, std::size_t parameter);

} // namespace journal
