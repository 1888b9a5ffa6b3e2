/// Words and levels that are put together when they are read.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// The words with latched bits; reading one latches anew.
[[nodiscard]] std::uint8_t read_fan_word(Instrument& instrument);
[[nodiscard]] std::uint16_t read_interlock_word(Instrument& instrument);

/// The heat-controller's own inputs: bits 0, 1 now, bits 2, 3 ever since the last reading.
[[nodiscard]] std::uint8_t read_heater_interlocks(Instrument& instrument);

/// 1 while an interlock input is closed.
[[nodiscard]] std::uint8_t input_level(const Instrument& instrument, Input input);

struct FanReading {
    std::uint16_t set_speed;      ///< rpm
    std::uint16_t measured_speed; ///< rpm
    float pwm;                    ///< fraction
};
[[nodiscard]] FanReading fan_reading(const Instrument& instrument);

/// Spreads an LED colour of the status over three flags.
void show_led(std::uint8_t led, std::uint8_t* red, std::uint8_t* green, std::uint8_t* blue);

} // namespace simulator
