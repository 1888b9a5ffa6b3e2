/// The verdict on a report: each fact against its limit, and what is not as it should be.
#pragma once

#include "companion/report/limits.h"

#include <cstdint>

namespace companion
{

enum class Verdict : std::uint8_t { pass, fail, incomplete, not_a_report };

/// "PASS", "FAIL", "INCOMPLETE", "NOT A REPORT"
[[nodiscard]] const char* verdict_name(Verdict verdict);
/// The exit status that tells it.
[[nodiscard]] constexpr int exit_status(Verdict verdict)
{
    return static_cast<int>(verdict);
}

/// Where the values lie in which they are good, in the fact's unit.
struct Band {
    double low, high; ///< infinite where there is no limit
};

enum class Outcome : std::uint8_t { not_judged, kept, marginal, broken, waived };

/// "not judged", "kept", "marginal", "broken", "waived"
[[nodiscard]] const char* outcome_name(Outcome outcome);

/// What came of a fact.
struct Judgement {
    const Fact* fact;
    const Limit* limit = nullptr;
    Outcome outcome = Outcome::not_judged;
    std::optional<Band> band = {};
    const char* broken_by = ""; ///< "mean", "largest deviation", "noise", "word"; what is broken
    const Waiver* waiver = nullptr;
};

/// Something that the user is to know. What has no key stands for the whole report.
struct Finding {
    enum class Kind : std::uint8_t { incomplete, failure, waived, marginal, note };
    Kind kind;
    std::string key;
    std::string value; ///< as shown; all texts of a finding are UTF-8
    std::string limit; ///< or what was expected
    int line = 0;
    std::string reason = {}; ///< why the limit is there, or why it is waived
};

/// "incomplete", "failure", "waived", "marginal", "note"
[[nodiscard]] const char* finding_kind_name(Finding::Kind kind);

struct Judged {
    const Report* report;
    Verdict verdict = Verdict::pass;
    std::vector<Judgement> judgements; ///< of all facts, in their order
    std::vector<Finding> findings;     ///< the severe ones first
    std::size_t judged = 0, not_judged = 0, marginal = 0, waived = 0;
};

struct JudgeOptions {
    std::string today; ///< "2027-06-30"
    bool accept_simulated = false;
};

[[nodiscard]] Judged judge(const Report& report, const Limits& limits, const JudgeOptions& options);

/// "24.002 V", with its spread when it has one.
[[nodiscard]] std::string value_text(const Fact& fact);
/// "23.52..24.48 V"
[[nodiscard]] std::string band_text(const Band& band, std::string_view unit);

} // namespace companion
