/// The settings that a scenario line may give by name: everything a tester wants to see that no
/// library call sets.
#pragma once

#include "simulator/model/instrument.h"
#include "simulator/scenario/words.h"

#include <string>

namespace simulator
{

/// Sets words[0] to words[1]. Returns false and says why when the name or the value is wrong;
/// nothing is changed then, nor when `really` is false.
[[nodiscard]] bool change_setting(const Words& words, bool really, Instrument& instrument,
                                  std::string& problem);

} // namespace simulator
