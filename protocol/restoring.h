/// The settings of the instrument around the steps of the acceptance test.
#pragma once

#include "protocol/report/report.h"

#include <cstdint>
#include <functional>

/// How the test leaves the instrument.
enum class InstrumentState : std::uint8_t {
    untouched, ///< the test changed nothing
    restored,  ///< the settings are those from before the test
    disabled,  ///< they are not, but the device is disabled
    unknown,   ///< neither could be done: outputs may be on
};

/// Tells it, as the last line of a test that came to no good end; it is an alarm when the settings
/// are not restored. Nothing when nothing was changed.
void report_state(Report& report, InstrumentState state);

/// Reads the settings, runs `steps`, and gives the instrument its settings back, whatever comes of
/// the steps. True when all of it went well; else the user has been told why.
[[nodiscard]] bool run_on_saved_settings(Report& report, InstrumentState& state,
                                         const std::function<bool()>& steps);
