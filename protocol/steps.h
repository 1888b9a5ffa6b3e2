/// The measurements of the acceptance test. They change enables, limits, ranges and targets: the
/// caller saves the configuration before and restores it after them, whatever comes of them.
#pragma once

#include "protocol/product_report.h"
#include "protocol/report/report.h"

#include <cstdint>

/// Runs all steps. False when one failed or the user stopped them; it has been told and reported.
[[nodiscard]] bool run_steps(Report& report, const ProductData& data);

/// How long that takes as a rule.
[[nodiscard]] std::int64_t expected_steps_ms(Report& report, const ProductData& data);
