#include "companion/report/show.h"

#include "companion/text.h"
#include "frame/text/format.h"

#include <algorithm>

namespace companion
{

namespace
{

Color verdict_color(Verdict verdict)
{
    return verdict == Verdict::pass   ? Color::good
           : verdict == Verdict::fail ? Color::bad
                                      : Color::warning;
}

struct KindShown {
    const char* word; ///< padded to one length
    Color color;
};

KindShown shown(Finding::Kind kind)
{
    constexpr KindShown words[] = {{"incomplete", Color::warning},
                                   {"FAIL      ", Color::bad},
                                   {"waived    ", Color::warning},
                                   {"marginal  ", Color::warning},
                                   {"note      ", Color::label}};
    return words[static_cast<std::size_t>(kind)];
}

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

void show_finding(Printer& printer, const Finding& finding, std::size_t key_width)
{
    const auto [word, color] = shown(finding.kind);
    printer.print("  ");
    printer.print(color, word);
    printer.print("  ");
    if (!finding.key.empty()) {
        printer.print(padded(finding.key, key_width) + "  ");
        printer.print(Color::value, finding.value);
        printer.print("  limit: " + finding.limit);
    } else {
        printer.print(finding.value);
    }
    if (finding.line > 0)
        printer.print(formatted("  line %d", finding.line));
    printer.print("\n");
    if (!finding.reason.empty())
        printer.print("              " + finding.reason + '\n');
}

void show_facts(Printer& printer, const Judged& judged, std::size_t key_width)
{
    for (const Judgement& judgement : judged.judgements) {
        const bool is_bad = judgement.outcome == Outcome::broken;
        printer.print(formatted("  %4d  ", judgement.fact->line) +
                      padded(judgement.fact->key, key_width) + "  ");
        printer.print(is_bad ? Color::bad : Color::value, utf8(value_text(*judgement.fact)));
        printer.print(std::string{"  "} + outcome_name(judgement.outcome));
        if (judgement.limit != nullptr)
            printer.print(": " + judgement.limit->rule);
        printer.print("\n");
    }
}

/// How wide the keys of its findings are.
std::size_t key_width_of(const Judged& judged)
{
    std::size_t width = 0;
    for (const Finding& finding : judged.findings)
        width = std::max(width, finding.key.size());
    return width;
}

} // namespace

const char* simulated_mark(bool is_simulated)
{
    return is_simulated ? " (SIMULATED instrument)" : "";
}

void show_waived(Printer& printer, const Judged& judged)
{
    const std::size_t key_width = key_width_of(judged);
    for (const Finding& finding : judged.findings) {
        if (finding.kind == Finding::Kind::waived)
            show_finding(printer, finding, key_width);
    }
}

std::vector<TestedUnit> tested_units(const Report& report)
{
    std::vector<TestedUnit> units;
    for (const std::string& unit : report.units) {
        const Fact* number = report.find(unit + "/product-number");
        if (number == nullptr)
            continue;
        std::string_view type = report.text_of(unit + "/device-type");
        const std::size_t name = std::min(type.find('('), type.size());
        type.remove_prefix(std::min(name + 1, type.size()));
        units.push_back(
            {unit, utf8(number->text), utf8(report.text_of(unit + "/product-identification")),
             utf8(type.substr(0, type.find(')'))), report.find(unit + "/steps") != nullptr});
    }
    return units;
}

std::string counts_text(const Judged& judged)
{
    std::string text = formatted("%zu judged, %zu not judged", judged.judged, judged.not_judged);
    if (judged.marginal > 0)
        text += formatted(", %zu marginal", judged.marginal);
    if (judged.waived > 0)
        text += formatted(", %zu waived", judged.waived);
    return text;
}

void show_verdict(Printer& printer, const Judged& judged, bool all_facts)
{
    const Report& report = *judged.report;
    printer.print(valid_utf8(report.name) + ": ");
    printer.print(verdict_color(judged.verdict), verdict_name(judged.verdict));
    if (judged.verdict == Verdict::not_a_report) {
        printer.print("\n");
        return;
    }
    printer.print(simulated_mark(report.is_simulated) + (", " + counts_text(judged)) + '\n');
    for (const TestedUnit& unit : tested_units(report))
        printer.print("  " + padded(unit.unit, 10) + "  P/N " + padded(unit.product_number, 8) +
                      "  " + unit.identification + (unit.was_skipped ? " (skipped)" : "") + '\n');
    std::size_t key_width = key_width_of(judged);
    for (const Finding& finding : judged.findings)
        show_finding(printer, finding, key_width);
    if (!all_facts)
        return;
    for (const Judgement& judgement : judged.judgements)
        key_width = std::max(key_width, judgement.fact->key.size());
    show_facts(printer, judged, key_width);
}

} // namespace companion
