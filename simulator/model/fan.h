/// The fan: its state word and its speed.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// The word with the latched bit of the slide switch; reading it latches anew.
[[nodiscard]] std::uint8_t read_fan_word(Instrument& instrument);

struct FanReading {
    std::uint16_t set_speed;      ///< rpm
    std::uint16_t measured_speed; ///< rpm
    float pwm;                    ///< fraction
};
[[nodiscard]] FanReading fan_reading(const Instrument& instrument);

} // namespace simulator
