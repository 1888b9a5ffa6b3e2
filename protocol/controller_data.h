/// What the acceptance test reports of the controller as a whole.
#pragma once

#include "protocol/report/report.h"

#include <cstdint>

/// Reads and reports product data, status words, settings and times, and tells the overall state.
/// False after a failed call, which has been reported.
[[nodiscard]] bool report_controller(Report& report, std::uint16_t& overall_state);
