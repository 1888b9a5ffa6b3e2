/// The outputs of the HV-supplies, in steps up to their voltage ranges.
#pragma once

#include "protocol/product_report.h"
#include "protocol/report/report.h"

/// For both polarities of the HV-supply in a slot. The target is 0 V at the end of each. False when
/// a step failed or the user stopped it; it has been told and reported.
[[nodiscard]] bool run_supply_steps(Report& report, const ProductData& data, unsigned slot);
