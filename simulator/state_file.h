/// What of the instrument outlives the program: settings and sets, the scan that was saved, clocks,
/// heater and outputs, as a text with a checksum.
#pragma once

#include "simulator/model/instrument.h"

#include <string>

namespace simulator
{

[[nodiscard]] std::string write_state(const Instrument& instrument);

/// Puts a state in the place of what the instrument keeps; the physical world stays as it is.
/// Returns false, with the instrument unchanged, when the text is not a whole and sound state.
[[nodiscard]] bool read_state(Instrument& instrument, const std::string& text);

} // namespace simulator
