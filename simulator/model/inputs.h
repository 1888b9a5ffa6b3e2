/// The interlock inputs, with the words whose bits are latched between two readings.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Inputs that are closed, and were all the time: bits as Input. An empty slot has none.
[[nodiscard]] unsigned steadily_closed(const Instrument& instrument);

/// The word with latched bits; reading it latches anew.
[[nodiscard]] std::uint16_t read_interlock_word(Instrument& instrument);

/// The heat-controller's own inputs: bits 0, 1 now, bits 2, 3 ever since the last reading.
[[nodiscard]] std::uint8_t read_heater_interlocks(Instrument& instrument);

/// 1 while an interlock input is closed.
[[nodiscard]] std::uint8_t input_level(const Instrument& instrument, Input input);

} // namespace simulator
