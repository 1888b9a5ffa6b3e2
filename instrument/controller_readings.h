/// What the controller tells about itself: the records, and reading them. What is made of them, in
/// which order they are read and whether a failed call is made again is the caller's.
#pragma once

#include "frame/failure.h"

#include <cstdint>
#include <string>

/// Bits of the controller's data-ready byte: there is a new value. See is_ready() in
/// instrument/module_readings.h.
namespace controller_ready_bit
{
inline constexpr int housekeeping = 0;
inline constexpr int fan = 2;
} // namespace controller_ready_bit

/// Uptime or operation time: since the last start, and summed over the device's life.
struct RunTimes {
    std::uint32_t seconds = 0, total_seconds = 0;
    std::uint16_t milliseconds = 0, total_milliseconds = 0;

    /// "1:23.45 sec."
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string total_text() const;
};

/// Supply voltages in V and temperatures in degrees Celsius.
struct ControllerHousekeeping {
    double plus_24 = 0, plus_5 = 0, plus_3_3 = 0;
    double cpu = 0, psu = 0;
};

struct CpuData {
    double load = 0;      ///< a fraction: 1 is 100 %
    double frequency = 0; ///< Hz
};

struct FanData {
    std::uint8_t failed = 0;                         ///< 0 = the fan runs as it should
    std::uint16_t reserved = 0;                      ///< nobody shows it
    std::uint16_t set_speed = 0, measured_speed = 0; ///< rpm
    float pwm = 0;                                   ///< duty, a fraction: 1 is 100 %
};

/// Each colour is on or off.
struct LedData {
    std::uint8_t red = 0, green = 0, blue = 0;
};

/// Levels of the inputs; instrument/status_words.h tells how they are shown.
struct InputLevels {
    std::uint8_t interlock_front = 0, interlock_rear = 0, fan_enabled = 0;
};

/// Set = good; instrument/status_words.h tells how they are shown.
struct PowerMonitors {
    std::uint8_t ac_input = 0, dc_output = 0;
};

// One call each.

[[nodiscard]] Failure attempt_uptime(RunTimes& times);
[[nodiscard]] Failure attempt_operation_time(RunTimes& times);
[[nodiscard]] Failure attempt_controller_housekeeping(ControllerHousekeeping& record);
[[nodiscard]] Failure attempt_cpu_data(CpuData& record);
[[nodiscard]] Failure attempt_fan_data(FanData& record);
[[nodiscard]] Failure attempt_led_data(LedData& record);
[[nodiscard]] Failure attempt_input_levels(InputLevels& record);
[[nodiscard]] Failure attempt_power_monitors(PowerMonitors& record);
