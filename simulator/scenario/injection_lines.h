/// The scenario lines that put something in the way of calls. Each routine returns false and says
/// why when its line is wrong; nothing is changed then, nor when `really` is false.
#pragma once

#include "simulator/scenario/words.h"

namespace simulator
{

/// fail FUNCTION always | at N | every N | after MS for MS [text "..."]
/// fail FUNCTION never
[[nodiscard]] bool fail_line(const Words& words, bool really, std::string& problem);

/// block FUNCTION [at N] for MS
/// block FUNCTION never
[[nodiscard]] bool block_line(const Words& words, bool really, std::string& problem);

/// reply FUNCTION.RESULT[ELEMENT]@NUMBER VALUE ...
/// reply FUNCTION.RESULT[ELEMENT]@NUMBER never
[[nodiscard]] bool reply_line(const Words& words, bool really, std::string& problem);

} // namespace simulator
