/// Status words, LEDs and control: what follows from settings, inputs and readings.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Works out the words, LEDs and what is controlling after something changed.
void refresh(Instrument& instrument);

/// A setting was changed: refresh, and keep it in the state file.
void settings_changed(Instrument& instrument);

/// Spreads an LED's colour over three flags.
void show_led(Led led, std::uint8_t* red, std::uint8_t* green, std::uint8_t* blue);

} // namespace simulator
