/// Trials of the companion: reports of real acceptance runs on a simulated instrument, and command
/// lines of `kov` in process.
#pragma once

#include "companion/report/judge.h"

#include <string>
#include <vector>

/// The lines of the simulated instrument's scenario language.
using Scenario = std::vector<std::string>;

/// The report of an acceptance test of a simulated instrument that is set up with these lines, with
/// noise. One without HV-supplies in slots 2 and 3 takes less time.
[[nodiscard]] std::string acceptance_report(const Scenario& lines = {});

/// Lines that leave out the HV-supplies of the slots 2 and 3.
extern const Scenario short_run;

/// A report that was read and judged by the default limits, on 2026-03-14.
struct JudgedReport {
    explicit JudgedReport(std::string bytes, const std::string& limits = {});
    JudgedReport(const JudgedReport&) = delete;
    JudgedReport& operator=(const JudgedReport&) = delete;

    [[nodiscard]] companion::Verdict verdict() const { return judged.verdict; }
    /// The findings that decide: "key: value", a line each.
    [[nodiscard]] std::string findings() const;

    companion::Report report;
    companion::Limits limits;
    companion::Judged judged;
};

/// What came of a command line of `kov`.
struct KovRun {
    int status = 0;
    std::string out, err;
};
struct TerminalOfKov {
    bool colored = false;
    int columns = 80;
    bool has_utf8 = true;
    bool is_full = false; ///< takes nothing
};
[[nodiscard]] KovRun run_kov(const std::vector<std::string>& arguments,
                             const TerminalOfKov& terminal = {});
