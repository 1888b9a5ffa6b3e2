/// A verdict on the console.
#pragma once

#include "companion/output.h"
#include "companion/report/judge.h"

namespace companion
{

/// Verdict, who was tested, and each finding in a line; all facts, too, when asked for.
void show_verdict(Printer& printer, const Judged& judged, bool all_facts);

/// Its waived findings, each in a line.
void show_waived(Printer& printer, const Judged& judged);

/// " (SIMULATED instrument)" behind what comes from one, else "".
[[nodiscard]] const char* simulated_mark(bool is_simulated);

/// A unit that was tested: "slot1", its product number and identification, in UTF-8.
struct TestedUnit {
    std::string unit, product_number, identification, type;
    bool was_skipped = false;
};
[[nodiscard]] std::vector<TestedUnit> tested_units(const Report& report);

/// "412 judged, 31 not judged, 2 marginal"
[[nodiscard]] std::string counts_text(const Judged& judged);

} // namespace companion
