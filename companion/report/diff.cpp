#include "companion/report/commands.h"
#include "companion/report/load.h"
#include "companion/report/show.h"
#include "companion/text.h"
#include "frame/text/format.h"

#include <algorithm>
#include <cmath>

namespace companion
{

namespace
{

/// A change counts when it is more than so many times what the series vary by themselves ...
constexpr double spreads_to_count = 4;
/// ... and more than this part of the band.
constexpr double band_part_to_count = 0.1;

/// What tells of a unit's versions, not of how it works.
constexpr std::string_view identity_keys[] = {"product-identification", "firmware-version",
                                              "firmware-date",          "hardware-type",
                                              "hardware-version",       "FPGA-version"};

/// A part of a key behind its unit.
std::string_view behind_unit(std::string_view key)
{
    return key.substr(std::min(key.find('/') + 1, key.size()));
}

double size_of(const Band& band)
{
    if (std::isinf(band.low) || std::isinf(band.high))
        return std::abs(std::isinf(band.low) ? band.high : band.low);
    return band.high - band.low;
}

/// How much a series varies by itself; NaN when that is not known.
double spread_of(const Fact& fact)
{
    if (!fact.spread)
        return NAN;
    return std::isnan(fact.spread->deviation) ? (fact.spread->above + fact.spread->below) / 2
                                              : fact.spread->deviation;
}

/// Whether a value has moved by more than chance and rounding.
bool has_moved(const Judgement& before, const Judgement& now)
{
    if (!now.band || !now.fact->value || !before.fact->value)
        return false;
    const double spread = std::hypot(spread_of(*before.fact), spread_of(*now.fact));
    if (std::isnan(spread) && std::isinf(now.band->high))
        return false; // how small a value may be does not tell how much is much
    const double change = std::abs(*now.fact->value - *before.fact->value);
    return !(change <= band_part_to_count * size_of(*now.band)) &&
           !(change <= (std::isnan(spread) ? 0.0 : spreads_to_count * spread));
}

bool is_good(Outcome outcome)
{
    return outcome == Outcome::kept || outcome == Outcome::marginal;
}

/// Whether a fact is another one than before, by its value, its word or what came of it.
bool has_drifted(const Judgement& before, const Judgement& now)
{
    if (is_good(before.outcome) && now.outcome == Outcome::broken)
        return true;
    const bool is_word = now.limit != nullptr && !now.limit->words.empty();
    return is_word ? before.fact->text != now.fact->text : has_moved(before, now);
}

/// Units of two reports that are the same one.
struct Pair {
    const TestedUnit *before, *now; ///< null = it is new, or gone
    bool is_guess = false;          ///< others have its number, too
};

/// The units of the new report in their order, then those that are gone. Of units with equal
/// numbers, those in one slot belong together, then the first of those that are left.
std::vector<Pair> pairs_of(const std::vector<TestedUnit>& old_units,
                           const std::vector<TestedUnit>& new_units)
{
    const auto is_same = [](const TestedUnit& a, const TestedUnit& b) {
        return a.product_number == b.product_number && a.type == b.type;
    };
    std::vector<Pair> pairs;
    pairs.reserve(old_units.size() + new_units.size());
    std::vector<const TestedUnit*> left;
    left.reserve(old_units.size());
    for (const TestedUnit& unit : old_units)
        left.push_back(&unit);
    for (const TestedUnit& unit : new_units)
        pairs.push_back({nullptr, &unit});
    for (const bool in_one_slot : {true, false}) {
        for (Pair& pair : pairs) {
            const auto found = std::find_if(left.begin(), left.end(), [&](const TestedUnit* unit) {
                return pair.before == nullptr && is_same(*unit, *pair.now) &&
                       (!in_one_slot || unit->unit == pair.now->unit);
            });
            if (found == left.end())
                continue;
            const auto equals = [&](const std::vector<TestedUnit>& units) {
                return std::count_if(units.begin(), units.end(), [&](const TestedUnit& unit) {
                    return is_same(unit, *pair.now);
                });
            };
            pair.before = *found;
            pair.is_guess = !in_one_slot && equals(old_units) + equals(new_units) > 2;
            left.erase(found);
        }
    }
    for (const TestedUnit* unit : left)
        pairs.push_back({unit, nullptr});
    return pairs;
}

/// Compares two reports unit by unit.
class Comparison
{
public:
    Comparison(Printer& printer, const Judged& before, const Judged& now)
        : printer_{printer}, before_{before}, now_{now}
    {
    }

    /// True when something has drifted.
    bool show()
    {
        printer_.print(
            formatted("A change counts above %g times the spread and %g %% of the band.\n",
                      spreads_to_count, band_part_to_count * 100));
        for (const Judged* each : {&before_, &now_})
            show_source(*each);
        const std::vector<TestedUnit> old_units = tested_units(*before_.report);
        const std::vector<TestedUnit> new_units = tested_units(*now_.report);
        for (const Pair& pair : pairs_of(old_units, new_units)) {
            const TestedUnit& unit = pair.now != nullptr ? *pair.now : *pair.before;
            if (pair.now != nullptr && pair.before != nullptr)
                show_unit(*pair.before, unit, pair.is_guess);
            else
                printer_.print("P/N " + unit.product_number + ", " + unit.unit +
                               (pair.now != nullptr ? ": new\n" : ": gone\n"));
        }
        printer_.print(any_ ? Color::bad : Color::good, any_ ? "DRIFT\n" : "no drift\n");
        return any_;
    }

private:
    /// What is to be known of a report before its values are believed.
    void show_source(const Judged& judged)
    {
        if (!judged.report->is_simulated && judged.waived == 0)
            return;
        printer_.print(valid_utf8(judged.report->name) +
                       simulated_mark(judged.report->is_simulated) + '\n');
        show_waived(printer_, judged);
    }

    void show_unit(const TestedUnit& old_unit, const TestedUnit& new_unit, bool is_guess)
    {
        title_ = "P/N " + new_unit.product_number + ", " + new_unit.unit;
        if (old_unit.unit != new_unit.unit)
            title_ += ", before in " + old_unit.unit;
        if (is_guess)
            title_ += ", one of several with this number";
        title_ += ":\n";
        if (old_unit.unit != new_unit.unit)
            show_title();
        for (const Judgement& now : now_.judgements) {
            if (unit_of(now.fact->key) != new_unit.unit)
                continue;
            const std::string_view key = behind_unit(now.fact->key);
            const Judgement* before = find_before(old_unit.unit, key);
            if (before != nullptr)
                compare(*before, now, key);
        }
    }

    const Judgement* find_before(const std::string& unit, std::string_view key)
    {
        const std::vector<Judgement>& all = before_.judgements;
        for (std::size_t tried = 0; tried < all.size(); ++tried) {
            const Judgement& judgement = all[(next_ + tried) % all.size()];
            if (behind_unit(judgement.fact->key) == key && unit_of(judgement.fact->key) == unit) {
                next_ = (next_ + tried + 1) % all.size();
                return &judgement;
            }
        }
        return nullptr;
    }

    void compare(const Judgement& before, const Judgement& now, std::string_view key)
    {
        const bool is_identity = std::find(std::begin(identity_keys), std::end(identity_keys),
                                           key) != std::end(identity_keys);
        const bool has_drifted_now = has_drifted(before, now);
        if (!(is_identity && before.fact->text != now.fact->text) && !has_drifted_now)
            return;
        show_title();
        printer_.print(is_identity ? "  version  " : "  ");
        if (!is_identity)
            printer_.print(Color::bad, "drift    ");
        printer_.print(std::string{key} + ": " + utf8(value_text(*before.fact)) + " -> ");
        printer_.print(Color::value, utf8(value_text(*now.fact)));
        if (now.band)
            printer_.print("  limit: " + utf8(band_text(*now.band, now.fact->unit)));
        if (is_good(before.outcome) && !is_good(now.outcome) && now.outcome != Outcome::not_judged)
            printer_.print(std::string{"  "} + outcome_name(before.outcome) + " -> " +
                           outcome_name(now.outcome));
        printer_.print("\n");
        any_ = any_ || has_drifted_now;
    }

    void show_title()
    {
        printer_.print(title_);
        title_.clear();
    }

    Printer& printer_;
    const Judged &before_, &now_;
    std::string title_; ///< empty once it was shown
    std::size_t next_ = 0;
    bool any_ = false;
};

} // namespace

int compare_reports(const DiffRequest& request, const Surroundings& outside)
{
    Limits limits;
    Report before, now;
    if (!load_limits(request.limits, outside, limits) ||
        !load_report(request.before, outside, before) || !load_report(request.now, outside, now))
        return wrong_usage;
    const JudgeOptions options{outside.today, true};
    const Judged judged[] = {judge(before, limits, options), judge(now, limits, options)};
    int worst = 0;
    for (const Judged& each : judged) {
        if (each.verdict != Verdict::incomplete && each.verdict != Verdict::not_a_report)
            continue;
        outside.complain(valid_utf8(each.report->name) + ": " + verdict_name(each.verdict));
        worst = std::max(worst, exit_status(each.verdict));
    }
    if (worst != 0)
        return worst;
    Printer printer{outside};
    const bool drift = Comparison{printer, judged[0], judged[1]}.show();
    if (!printer.flush())
        return wrong_usage;
    return drift ? 1 : 0;
}

} // namespace companion
