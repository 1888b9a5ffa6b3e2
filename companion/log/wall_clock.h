/// The time of day of what was recorded.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace companion
{

/// The local time at which a recording began, in the time zone in which it is read: the file names
/// none.
class WallClock
{
public:
    /// From "Sat, 03/14/2026, 09:26:53"; false when it is no such time.
    [[nodiscard]] bool set(std::string_view acquisition_time);

    /// "2026-03-14T09:26:53.013+01:00", that many milliseconds later. The offset is the one of
    /// then: the clock may be put back or forward meanwhile.
    [[nodiscard]] std::string text_after(std::int64_t milliseconds);

    /// Milliseconds from the begin to "2026-03-14T09:26:53.013+01:00" or what is left of it: the
    /// seconds, their fraction and the offset (then it is local time) may be missing, a blank may
    /// stand for the T. False when it is no such time.
    [[nodiscard]] bool read(std::string_view text, std::int64_t& milliseconds) const;

private:
    void find_offset(std::int64_t seconds);

    std::int64_t start_s_ = 0;                   ///< since 1970, UTC
    std::int64_t known_from_ = 0, known_to_ = 0; ///< where the offset is the one that was found
    std::int64_t offset_s_ = 0;
};

} // namespace companion
