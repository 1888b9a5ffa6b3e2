/// The outputs of the HV-supplies, in steps up to their voltage ranges.
#pragma once

#include "protocol/product_report.h"
#include "protocol/report.h"

/// For each HV-supply and polarity. The target is 0 V at the end of each.
[[nodiscard]] bool run_supply_steps(Report& report, const ProductData& data);
