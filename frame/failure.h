/// What becomes of a call of the device library.
#pragma once

/// Success, or the name of the function that failed: true when one did.
class [[nodiscard]] Failure
{
public:
    /// Success.
    constexpr Failure() = default;
    constexpr explicit Failure(const char* function) : function_(function) {}

    [[nodiscard]] constexpr explicit operator bool() const { return function_ != nullptr; }
    /// Its name with the library's prefix; only after a failure.
    [[nodiscard]] constexpr const char* function() const { return function_; }

private:
    const char* function_ = nullptr;
};
