/// The scenario language: lines that set up the instrument and put faults in the way of calls. The
/// tests use the same lines as the file that KOV_SIMULATOR_SCENARIO names.
#pragma once

#include <string>
#include <string_view>

namespace simulator
{

/// Carries out one line. Returns false and says why in `problem` when it is wrong; nothing is
/// changed then.
[[nodiscard]] bool carry_out_line(std::string_view line, std::string& problem);

/// Reads the scenario file, if one is named, on the first library call of the process.
void load_scenario_once();

/// The fault of the scenario file, with file name and line number; empty when there is none.
[[nodiscard]] const std::string& scenario_problem();

/// Carries out the settings of the scenario file again, for a state that came from a file.
void apply_scenario_settings();

/// Carries out the lines whose time has come.
void apply_due_lines();

/// Forgets the scenario; the next call reads it again.
void forget_scenario();

} // namespace simulator
