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

/// Whether a value has moved by more than chance and rounding.
bool has_drifted(const Judgement& before, const Judgement& now)
{
    if (!now.band || !now.fact->value || !before.fact->value)
        return false;
    const bool is_open = std::isinf(now.band->low) || std::isinf(now.band->high);
    const double one = before.fact->spread ? before.fact->spread->deviation : NAN;
    const double other = now.fact->spread ? now.fact->spread->deviation : NAN;
    const double spread = std::hypot(one, other);
    if (std::isnan(spread) && is_open)
        return false; // neither tells how much is much
    const double change = std::abs(*now.fact->value - *before.fact->value);
    return !(change <= band_part_to_count * size_of(*now.band)) &&
           !(change <= (std::isnan(spread) ? 0.0 : spreads_to_count * spread));
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
        const std::vector<TestedUnit> old_units = tested_units(*before_.report);
        const std::vector<TestedUnit> new_units = tested_units(*now_.report);
        const auto counterpart = [](const std::vector<TestedUnit>& units, const TestedUnit& unit) {
            return std::find_if(units.begin(), units.end(), [&](const TestedUnit& other) {
                return other.product_number == unit.product_number && other.type == unit.type;
            });
        };
        for (const TestedUnit& unit : new_units) {
            const auto found = counterpart(old_units, unit);
            if (found == old_units.end())
                printer_.print("P/N " + unit.product_number + ", " + unit.unit + ": new\n");
            else
                show_unit(*found, unit);
        }
        for (const TestedUnit& unit : old_units) {
            if (counterpart(new_units, unit) == new_units.end())
                printer_.print("P/N " + unit.product_number + ", " + unit.unit + ": gone\n");
        }
        printer_.print(any_ ? Color::bad : Color::good, any_ ? "DRIFT\n" : "no drift\n");
        return any_;
    }

private:
    void show_unit(const TestedUnit& old_unit, const TestedUnit& new_unit)
    {
        title_ = "P/N " + new_unit.product_number + ", " + new_unit.unit;
        if (old_unit.unit != new_unit.unit)
            title_ += ", before in " + old_unit.unit;
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
        const bool is_word = now.limit != nullptr && !now.limit->words.empty();
        const bool has_drifted_now =
            is_word ? before.fact->text != now.fact->text : has_drifted(before, now);
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
    Printer printer{outside.out, outside.colored};
    const bool drift = Comparison{printer, judged[0], judged[1]}.show();
    if (!printer.flush())
        return wrong_usage;
    return drift ? 1 : 0;
}

} // namespace companion
