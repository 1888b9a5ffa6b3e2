/// The measurements on the controller as a whole. What returns false has told the user, and the
/// report, why.
#pragma once

#include "protocol/report/report.h"

/// Enable and disable, communication, CPU, housekeeping, fan.
[[nodiscard]] bool run_controller_steps(Report& report);

/// Switches the device on and reads back whether it is; false when it is not.
[[nodiscard]] bool enable_device_and_check(Report& report);
