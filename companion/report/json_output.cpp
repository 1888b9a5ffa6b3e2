#include "companion/report/reading/written_forms.h"
#include "companion/report/show.h"
#include "companion/text.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace companion
{

using Json = nlohmann::ordered_json;

namespace
{

constexpr int schema_version = 1;

Json number(double value)
{
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json fact_json(const Judgement& judgement)
{
    const Fact& fact = *judgement.fact;
    Json json{{"key", fact.key}, {"outcome", outcome_name(judgement.outcome)}};
    json["line"] = fact.line;
    json["computed"] = fact.text.empty() && fact.value;
    if (!fact.text.empty())
        json["text"] = utf8(fact.text);
    if (fact.value) {
        json["value"] = number(*fact.value);
        json["unit"] = utf8(fact.unit);
    }
    if (fact.spread)
        json["spread"] = {{"deviation", number(fact.spread->deviation)},
                          {"above", number(fact.spread->above)},
                          {"below", number(fact.spread->below)}};
    if (fact.samples > 0)
        json["samples"] = fact.samples;
    if (judgement.limit != nullptr)
        json["limit"] = {{"rule", valid_utf8(judgement.limit->rule)},
                         {"reason", valid_utf8(judgement.limit->reason)}};
    if (judgement.band)
        json["band"] = {{"low", number(judgement.band->low)},
                        {"high", number(judgement.band->high)}};
    if (*judgement.broken_by != '\0')
        json["broken_by"] = judgement.broken_by;
    if (judgement.waiver != nullptr)
        json["waiver"] = {{"until", judgement.waiver->until},
                          {"reason", valid_utf8(judgement.waiver->reason)}};
    return json;
}

Json finding_json(const Finding& finding)
{
    Json json;
    json["kind"] = finding_kind_name(finding.kind);
    if (!finding.key.empty())
        json["key"] = finding.key;
    json["value"] = finding.value;
    if (!finding.limit.empty())
        json["limit"] = finding.limit;
    if (finding.line > 0)
        json["line"] = finding.line;
    if (!finding.reason.empty())
        json["reason"] = finding.reason;
    return json;
}

Json report_json(const Judged& judged)
{
    const Report& report = *judged.report;
    Json json{{"file", valid_utf8(report.name)}, {"verdict", verdict_name(judged.verdict)}};
    json["created"] = utf8(report.text_of("run/created"));
    json["simulated"] = report.is_simulated;
    json["counts"] = {{"judged", judged.judged},
                      {"not_judged", judged.not_judged},
                      {"marginal", judged.marginal},
                      {"waived", judged.waived}};
    json["units"] = Json::array();
    for (const TestedUnit& unit : tested_units(report))
        json["units"].push_back({{"unit", unit.unit},
                                 {"product_number", unit.product_number},
                                 {"identification", unit.identification},
                                 {"type", unit.type},
                                 {"skipped", unit.was_skipped}});
    json["findings"] = Json::array();
    for (const Finding& finding : judged.findings)
        json["findings"].push_back(finding_json(finding));
    json["facts"] = Json::array();
    for (const Judgement& judgement : judged.judgements)
        json["facts"].push_back(fact_json(judgement));
    return json;
}

} // namespace

void begin_json(TextFile& file)
{
    file.write("{\"schema\": \"kov-report\", \"version\": " + std::to_string(schema_version) +
               ", \"reports\": [");
}

void write_json(TextFile& file, const Judged& judged, bool is_first)
{
    file.write(std::string{is_first ? "\n" : ",\n"} + report_json(judged).dump(1));
}

void end_json(TextFile& file, const std::vector<std::string>& unreadable)
{
    Json names = Json::array();
    for (const std::string& name : unreadable)
        names.push_back(valid_utf8(name));
    file.write("\n], \"unreadable\": " + names.dump() + "}\n");
}

} // namespace companion
