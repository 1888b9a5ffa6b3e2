#include "companion/report/judge.h"

#include "companion/report/units.h"
#include "companion/text.h"
#include "frame/text/format.h"
#include "protocol/report/report.h"
#include "protocol/report/report_texts.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace companion
{

const char* verdict_name(Verdict verdict)
{
    constexpr const char* names[] = {"PASS", "FAIL", "INCOMPLETE", "NOT A REPORT"};
    return names[static_cast<std::size_t>(verdict)];
}

const char* finding_kind_name(Finding::Kind kind)
{
    constexpr const char* names[] = {"incomplete", "failure", "waived", "marginal", "note"};
    return names[static_cast<std::size_t>(kind)];
}

const char* outcome_name(Outcome outcome)
{
    constexpr const char* names[] = {"not judged", "kept", "marginal", "broken", "waived"};
    return names[static_cast<std::size_t>(outcome)];
}

std::string value_text(const Fact& fact)
{
    if (!fact.text.empty() || !fact.value)
        return std::string{fact.text};
    const std::string unit = fact.unit.empty() ? "" : " " + std::string{fact.unit};
    std::string text = formatted("%.6g", *fact.value) + unit;
    if (fact.spread)
        text += formatted(" \xB1 %.4g (+%.3g, -%.3g)", fact.spread->deviation, fact.spread->above,
                          fact.spread->below);
    return text;
}

std::string band_text(const Band& band, std::string_view unit)
{
    const auto side = [](double value) {
        return std::isinf(value) ? std::string{} : formatted("%.6g", value);
    };
    return side(band.low) + ".." + side(band.high) + (unit.empty() ? "" : " ") + std::string{unit};
}

namespace
{

/// How large a term is in the fact's unit; nothing when the two do not fit.
std::optional<double> size_of(const Term& term, const Fact& fact, double nominal)
{
    if (term.unit != "%" || (fact.unit == "%" && term.reference.empty())) {
        const std::optional<double> ratio = unit_ratio(term.unit, fact.unit);
        return ratio ? std::optional{term.amount * *ratio} : std::nullopt;
    }
    double whole = nominal;
    if (!term.reference.empty()) {
        const auto found = std::find_if(
            fact.references.begin(), fact.references.end(),
            [&](const Reference& reference) { return term.reference == reference.name; });
        if (found == fact.references.end())
            return std::nullopt;
        whole = found->value;
    }
    return std::abs(whole) * term.amount / 100.0;
}

std::optional<Band> band_of(const Limit& limit, const Fact& fact)
{
    const std::optional<double> ratio =
        limit.unit.empty() ? std::optional{1.0} : unit_ratio(limit.unit, fact.unit);
    if (!ratio)
        return std::nullopt;
    if (limit.low || limit.high) {
        constexpr double none = std::numeric_limits<double>::infinity();
        return Band{limit.low ? *limit.low * *ratio : -none,
                    limit.high ? *limit.high * *ratio : none};
    }
    const double nominal = limit.nominal * *ratio;
    double tolerance = 0;
    for (const Term& term : limit.tolerance) {
        const std::optional<double> size = size_of(term, fact, nominal);
        if (!size)
            return std::nullopt;
        tolerance += *size;
    }
    return Band{nominal - tolerance, nominal + tolerance};
}

bool is_inside(const Band& band, double value)
{
    // Decimals of a report have no exact binary form: a limit belongs to its band.
    const double ends[] = {band.low, band.high};
    double slack = 0;
    for (const double end : ends)
        slack = std::max(slack, std::isinf(end) ? 0 : std::abs(end) * 1e-9);
    return value >= band.low - slack && value <= band.high + slack;
}

/// Within the last tenth of a band, or of a limit that stands alone.
bool is_marginal(const Band& band, double value)
{
    constexpr double part = 0.1;
    const double half = std::isinf(band.low)    ? std::abs(band.high)
                        : std::isinf(band.high) ? std::abs(band.low)
                                                : (band.high - band.low) / 2;
    return value > band.high - part * half || value < band.low + part * half;
}

void judge_number(Judgement& judgement)
{
    const Fact& fact = *judgement.fact;
    const Limit& limit = *judgement.limit;
    judgement.band = band_of(limit, fact);
    const auto broken = [&](const char* by) {
        judgement.outcome = Outcome::broken;
        judgement.broken_by = by;
    };
    if (!judgement.band)
        return broken("unit");
    const Band& band = *judgement.band;
    const double value = fact.value.value_or(std::nan(""));
    if (!is_inside(band, value))
        return broken("mean");
    const Spread spread = fact.spread.value_or(Spread{});
    if (!is_inside(band, value + spread.above) || !is_inside(band, value - spread.below))
        return broken("largest deviation");
    const std::optional<double> noise =
        limit.noise ? size_of(*limit.noise, fact, limit.nominal) : std::nullopt;
    if (limit.noise && (!noise || !(spread.deviation <= *noise)))
        return broken("noise");
    const bool is_near = is_marginal(band, value) || is_marginal(band, value + spread.above) ||
                         is_marginal(band, value - spread.below);
    // A band without width is kept exactly or not at all.
    judgement.outcome = is_near && band.high > band.low ? Outcome::marginal : Outcome::kept;
}

void judge_word(Judgement& judgement)
{
    const std::vector<std::string>& words = judgement.limit->words;
    const std::string text = plain_signs(utf8(judgement.fact->text));
    const bool is_allowed = std::find(words.begin(), words.end(), text) != words.end();
    judgement.outcome = is_allowed ? Outcome::kept : Outcome::broken;
    judgement.broken_by = is_allowed ? "" : "word";
}

bool says_fail(std::string_view text)
{
    return text == "fail" || text == report_text::fan_failed;
}

Judgement judge_fact(const Fact& fact, const Limits& limits)
{
    Judgement judgement{.fact = &fact, .limit = limits.find(fact)};
    if (judgement.limit == nullptr) {
        if (says_fail(fact.text)) {
            judgement.outcome = Outcome::broken;
            judgement.broken_by = "word";
        }
    } else if (!judgement.limit->words.empty() || !fact.value) {
        judge_word(judgement); // where a number is due, no word is allowed
    } else {
        judge_number(judgement);
    }
    return judgement;
}

std::string limit_text(const Judgement& judgement)
{
    if (judgement.limit == nullptr)
        return "not a word that says fail";
    std::string text = valid_utf8(judgement.limit->rule);
    if (judgement.band && !judgement.limit->tolerance.empty())
        text += " = " + utf8(band_text(*judgement.band, judgement.fact->unit));
    const std::string_view by = judgement.broken_by;
    if (!by.empty() && by != "mean" && by != "word")
        text += " (" + std::string{by} + ')';
    return text;
}

/// Gathers what was judged into a verdict.
class Judge
{
public:
    Judge(const Report& report, const Limits& limits, const JudgeOptions& options)
        : report_{report}, limits_{limits}, options_{options}
    {
        judged_.report = &report;
    }

    Judged result()
    {
        for (const Problem& problem : report_.problems)
            judged_.findings.push_back(
                {Finding::Kind::incomplete, "", utf8(problem.text), "", problem.line});
        judged_.judgements.reserve(report_.facts.size());
        for (const Fact& fact : report_.facts)
            add(judge_fact(fact, limits_));
        check_expectations();
        if (report_.is_report && report_.problems.empty()) {
            check_that_something_was_tested();
            check_that_limits_act();
        }
        check_source();
        std::stable_sort(judged_.findings.begin(), judged_.findings.end(),
                         [](const Finding& a, const Finding& b) { return a.kind < b.kind; });
        judged_.verdict = verdict();
        return std::move(judged_);
    }

private:
    void add(Judgement judgement)
    {
        if (judgement.outcome == Outcome::broken) {
            judgement.waiver = limits_.find_waiver(judgement.fact->key, options_.today);
            if (judgement.waiver != nullptr)
                judgement.outcome = Outcome::waived;
        }
        ++(judgement.outcome == Outcome::not_judged ? judged_.not_judged : judged_.judged);
        judged_.marginal += judgement.outcome == Outcome::marginal ? 1 : 0;
        judged_.waived += judgement.outcome == Outcome::waived ? 1 : 0;
        report(judgement);
        judged_.judgements.push_back(judgement);
    }

    void report(const Judgement& judgement)
    {
        using Kind = Finding::Kind;
        if (judgement.outcome == Outcome::not_judged || judgement.outcome == Outcome::kept)
            return;
        const Kind kind = judgement.outcome == Outcome::broken   ? Kind::failure
                          : judgement.outcome == Outcome::waived ? Kind::waived
                                                                 : Kind::marginal;
        std::string reason = judgement.limit != nullptr ? judgement.limit->reason : "";
        if (judgement.waiver != nullptr)
            reason = "waived until " + judgement.waiver->until + ": " + judgement.waiver->reason;
        judged_.findings.push_back({kind, judgement.fact->key, utf8(value_text(*judgement.fact)),
                                    limit_text(judgement), judgement.fact->line,
                                    std::move(reason)});
    }

    void fail(std::string key, std::string value, std::string expected, int line)
    {
        const Waiver* waiver = limits_.find_waiver(key, options_.today);
        judged_.waived += waiver != nullptr ? 1 : 0;
        judged_.findings.push_back(
            {waiver != nullptr ? Finding::Kind::waived : Finding::Kind::failure, std::move(key),
             std::move(value), std::move(expected), line,
             waiver != nullptr ? "waived until " + waiver->until + ": " + waiver->reason : ""});
    }

    void check_expectations()
    {
        for (const Expectation& expected : limits_.expectations) {
            const Fact* type = report_.find(expected.unit + "/device-type");
            const std::string name = '(' + expected.type + ')';
            if (type == nullptr)
                fail(expected.unit, "missing", "expect " + expected.type, 0);
            else if (type->text.find(name) == std::string_view::npos)
                fail(expected.unit + "/device-type", utf8(type->text), "expect " + expected.type,
                     type->line);
        }
    }

    /// Modules that are there must have been tested, and there must be one.
    void check_that_something_was_tested()
    {
        bool any = false;
        for (const std::string& unit : report_.units) {
            const Fact* skipped = report_.find(unit + "/steps");
            any = any || (unit.starts_with("slot") && skipped == nullptr &&
                          report_.find(unit + "/CPU/load") != nullptr);
            if (skipped != nullptr && skipped->text != report_text::no_module &&
                skipped->text != report_text::base_unit_missing)
                fail(skipped->key, std::string{skipped->text}, "tested, since it is there",
                     skipped->line);
        }
        if (!any)
            fail("modules", "none", "at least one module that was tested", 0);
    }

    /// Limits that judge nothing must not let pass, and one that fits nothing may be mistyped.
    void check_that_limits_act()
    {
        if (judged_.judged == 0)
            judged_.findings.push_back({Finding::Kind::failure, "limits", "nothing was judged",
                                        "at least one fact that has a limit"});
        std::vector<Finding> notes;
        for (const OwnPattern& own : limits_.own_patterns) {
            const auto fits = [&](const auto& what) { return fits_pattern(what.key, own.pattern); };
            const bool fits_fact = std::any_of(report_.facts.begin(), report_.facts.end(), fits);
            const bool fits_finding = own.is_waiver && std::any_of(judged_.findings.begin(),
                                                                   judged_.findings.end(), fits);
            if (!fits_fact && !fits_finding)
                notes.push_back({Finding::Kind::note, own.pattern,
                                 formatted("line %d of the limits", own.line),
                                 "it fits no fact of this report"});
        }
        std::move(notes.begin(), notes.end(), std::back_inserter(judged_.findings));
    }

    void check_source()
    {
        const Fact* told = report_.simulated_unit();
        if (told == nullptr)
            return;
        judged_.findings.push_back(
            {options_.accept_simulated ? Finding::Kind::note : Finding::Kind::failure, told->key,
             utf8(told->text),
             options_.accept_simulated ? "a real instrument; accepted for --simulated"
                                       : "a real instrument (--simulated accepts this one)",
             0});
    }

    [[nodiscard]] Verdict verdict() const
    {
        if (!report_.is_report)
            return Verdict::not_a_report;
        const auto has = [this](Finding::Kind kind) {
            return std::any_of(judged_.findings.begin(), judged_.findings.end(),
                               [kind](const Finding& finding) { return finding.kind == kind; });
        };
        if (has(Finding::Kind::incomplete))
            return Verdict::incomplete;
        return has(Finding::Kind::failure) ? Verdict::fail : Verdict::pass;
    }

    const Report& report_;
    const Limits& limits_;
    const JudgeOptions& options_;
    Judged judged_;
};

} // namespace

Judged judge(const Report& report, const Limits& limits, const JudgeOptions& options)
{
    return Judge{report, limits, options}.result();
}

} // namespace companion
