#include "companion/report/reading/layout.h"
#include "protocol/report/report_texts.h"

#include <algorithm>
#include <cmath>

namespace companion
{

namespace
{

/// What the product identifications of the simulated instrument end with.
constexpr std::string_view simulated_mark = ", simulated";

std::vector<std::string> units_of(const std::vector<Fact>& facts)
{
    std::vector<std::string> units;
    for (const Fact& fact : facts) {
        const std::string_view unit = unit_of(fact.key);
        const bool is_known = std::find(units.rbegin(), units.rend(), unit) != units.rend();
        if (!is_known)
            units.emplace_back(unit);
    }
    return units;
}

} // namespace

const Fact* Report::find(std::string_view key) const
{
    const auto found = std::find_if(facts.begin(), facts.end(),
                                    [key](const Fact& fact) { return fact.key == key; });
    return found != facts.end() ? &*found : nullptr;
}

std::string_view Report::text_of(std::string_view key) const
{
    const Fact* fact = find(key);
    return fact != nullptr ? fact->text : std::string_view{};
}

double Report::value_of(std::string_view key) const
{
    const Fact* fact = find(key);
    return fact != nullptr ? fact->value.value_or(NAN) : NAN;
}

const Fact* Report::simulated_unit() const
{
    const auto found = std::find_if(facts.begin(), facts.end(), [](const Fact& fact) {
        return fact.key.ends_with("/product-identification") && fact.text.ends_with(simulated_mark);
    });
    return found != facts.end() ? &*found : nullptr;
}

Report read_report(std::string name, std::string bytes)
{
    Report report;
    report.name = std::move(name);
    report.bytes = std::move(bytes);
    report.is_report = report.bytes.starts_with(report_text::created_on);
    if (!report.is_report)
        return report;
    constexpr std::size_t usual_facts = 900;
    report.facts.reserve(usual_facts);
    LineReader reader{report};
    UnitsFound found;
    read_product_data(reader, found);
    read_steps(reader, found);
    report.units = units_of(report.facts);
    report.is_simulated = report.simulated_unit() != nullptr;
    add_derived_facts(report);
    return report;
}

} // namespace companion
