/// The heater under each of its limits in turn.
#pragma once

#include "protocol/product_report.h"
#include "protocol/report/report.h"

/// For a heat-controller that is there. Deactivates the module in the end. False when a step
/// failed or the user stopped it; it has been told and reported.
[[nodiscard]] bool run_heater_steps(Report& report, const ProductData& data);
