#include "companion/page.h"
#include "companion/report/pictures.h"
#include "companion/report/reading/written_forms.h"
#include "companion/report/show.h"
#include "companion/text.h"
#include "frame/text/format.h"

namespace companion
{

namespace
{

const char* verdict_class(Verdict verdict)
{
    constexpr const char* classes[] = {"pass", "fail", "incomplete", "none"};
    return classes[static_cast<std::size_t>(verdict)];
}

std::string cell(std::string_view text, const char* style = "")
{
    return std::string{"<td"} + (*style != '\0' ? std::string{" class=\""} + style + '"' : "") +
           '>' + escaped_markup(text) + "</td>";
}

void write_head(TextFile& file, const Judged& judged)
{
    const Report& report = *judged.report;
    file.write(std::string{"<main>\n<header class=\"verdict "} + verdict_class(judged.verdict) +
               "\">\n<h1>Acceptance test " + escaped_markup(report.name) + "</h1>\n<strong>" +
               verdict_name(judged.verdict) + "</strong>\n<p>Created on " +
               escaped_markup(utf8(report.text_of("run/created"))) + "; " +
               escaped_markup(counts_text(judged)) + "</p>\n</header>\n");
    if (report.is_simulated)
        file.write("<p class=\"simulated\">This is the report of a SIMULATED instrument.</p>\n");
}

void write_units(TextFile& file, const Report& report)
{
    file.write("<h2>Tested</h2>\n<table><thead><tr><th>Unit</th><th>Product number</th>"
               "<th>Identification</th><th>Type</th></tr></thead><tbody>\n");
    for (const TestedUnit& unit : tested_units(report))
        file.write("<tr>" + cell(unit.unit, "key unit") + cell("P/N " + unit.product_number) +
                   cell(unit.identification + (unit.was_skipped ? " (skipped)" : "")) +
                   cell(unit.type) + "</tr>\n");
    file.write("</tbody></table>\n");
}

void write_findings(TextFile& file, const Judged& judged)
{
    file.write("<h2>Findings</h2>\n");
    if (judged.findings.empty()) {
        file.write("<p>None.</p>\n");
        return;
    }
    file.write("<table><thead><tr><th></th><th>What</th><th>Value</th><th>Limit</th><th>Line</th>"
               "</tr></thead><tbody>\n");
    for (const Finding& finding : judged.findings) {
        const bool is_severe =
            finding.kind == Finding::Kind::failure || finding.kind == Finding::Kind::incomplete;
        file.write(
            std::string{"<tr class=\""} + (is_severe ? "bad" : "warn") + "\">" +
            cell(finding_kind_name(finding.kind), "kind") + cell(finding.key, "key") +
            cell(finding.value) + "<td>" + escaped_markup(finding.limit) +
            (finding.reason.empty()
                 ? ""
                 : "<br><span class=\"faint\">" + escaped_markup(finding.reason) + "</span>") +
            "</td>" + cell(finding.line > 0 ? formatted("line %d", finding.line) : "", "outcome") +
            "</tr>\n");
    }
    file.write("</tbody></table>\n");
}

void write_judged_facts(TextFile& file, const Judged& judged, const std::string& unit)
{
    std::string rows;
    for (const Judgement& judgement : judged.judgements) {
        if (unit_of(judgement.fact->key) != unit || judgement.outcome == Outcome::not_judged)
            continue;
        const char* tone = judgement.outcome == Outcome::broken ? "bad"
                           : judgement.outcome == Outcome::kept ? ""
                                                                : "warn";
        rows += std::string{"<tr class=\""} + tone + "\">" +
                cell(judgement.fact->key.substr(unit.size() + 1), "key") +
                cell(utf8(value_text(*judgement.fact))) + "<td class=\"picture\">" +
                band_picture(judgement) + "</td>" +
                cell(judgement.limit != nullptr ? judgement.limit->rule : "no fail") +
                cell(outcome_name(judgement.outcome), "outcome") + "</tr>\n";
    }
    if (!rows.empty())
        file.write("<table><thead><tr><th>What</th><th>Value</th><th>In its band</th><th>Limit</th>"
                   "<th></th></tr></thead><tbody>\n" +
                   rows + "</tbody></table>\n");
}

void write_other_facts(TextFile& file, const Judged& judged, const std::string& unit)
{
    std::string items;
    for (const Judgement& judgement : judged.judgements) {
        if (unit_of(judgement.fact->key) == unit && judgement.outcome == Outcome::not_judged)
            items += "<li><span class=\"key\">" +
                     escaped_markup(judgement.fact->key.substr(unit.size() + 1)) + "</span> " +
                     escaped_markup(utf8(value_text(*judgement.fact))) + "</li>\n";
    }
    if (!items.empty())
        file.write("<p class=\"faint\">Not judged:</p>\n<ul class=\"others\">\n" + items +
                   "</ul>\n");
}

void write_unit(TextFile& file, const Judged& judged, const std::string& unit)
{
    const std::string_view number = judged.report->text_of(unit + "/product-number");
    file.write("<h2>" + escaped_markup(unit) +
               (number.empty() ? "" : ", P/N " + escaped_markup(utf8(number))) + "</h2>\n");
    if (unit == "slot0")
        file.write(heater_picture(judged));
    file.write(output_error_picture(judged, unit));
    file.write(output_current_picture(judged, unit));
    write_judged_facts(file, judged, unit);
    write_other_facts(file, judged, unit);
}

} // namespace

void begin_html(TextFile& file, bool several)
{
    begin_page(file, several ? "Acceptance tests" : "Acceptance test");
}

void write_html(TextFile& file, const Judged& judged)
{
    write_head(file, judged);
    if (judged.verdict != Verdict::not_a_report) {
        write_units(file, *judged.report);
        write_findings(file, judged);
        for (const std::string& unit : judged.report->units)
            write_unit(file, judged, unit);
        file.write(
            "<div class=\"signature\"><span>Name</span><span>Date</span><span>Signature</span>"
            "</div>\n");
    }
    file.write("</main>\n");
}

void write_unreadable_html(TextFile& file, const std::string& name)
{
    file.write("<main>\n<header class=\"verdict none\">\n<h1>Acceptance test " +
               escaped_markup(name) + "</h1>\n<strong>UNREADABLE</strong>\n</header>\n</main>\n");
}

void end_html(TextFile& file)
{
    end_page(file);
}

} // namespace companion
