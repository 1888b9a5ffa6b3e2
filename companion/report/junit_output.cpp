#include "companion/report/reading/written_forms.h"
#include "companion/report/show.h"
#include "companion/text.h"
#include "frame/text/format.h"

#include <algorithm>
#include <map>

namespace companion
{

namespace
{

std::string attribute(const char* name, std::string_view text)
{
    return std::string{" "} + name + "=\"" + escaped_markup(text) + '"';
}

/// One test case, with what is wrong in it.
std::string test_case(const std::string& suite, std::string_view name, const char* element,
                      const std::string& message)
{
    std::string text = "    <testcase" + attribute("classname", suite) + attribute("name", name) +
                       attribute("time", "0");
    if (*element == '\0')
        return text + "/>\n";
    return text + ">\n      <" + element + attribute("message", message) +
           (element == std::string_view{"failure"} ? attribute("type", "limit") : "") +
           "/>\n    </testcase>\n";
}

/// The test cases of a suite, and how many of each kind.
struct Suite {
    std::string name;
    std::string cases;
    int tests = 0, failures = 0, errors = 0, skipped = 0;

    void add(std::string_view test, const char* element = "", const std::string& message = {})
    {
        cases += test_case(name, test, element, message);
        ++tests;
        failures += element == std::string_view{"failure"} ? 1 : 0;
        errors += element == std::string_view{"error"} ? 1 : 0;
        skipped += element == std::string_view{"skipped"} ? 1 : 0;
    }

    void write(TextFile& file, const std::string& timestamp) const
    {
        if (tests > 0)
            file.write("  <testsuite" + attribute("name", name) +
                       formatted(" tests=\"%d\" failures=\"%d\" errors=\"%d\" skipped=\"%d\"",
                                 tests, failures, errors, skipped) +
                       attribute("time", "0") + attribute("hostname", "localhost") +
                       attribute("timestamp", timestamp) + ">\n" + cases + "  </testsuite>\n");
    }
};

/// "2026/03/14, 09:26:53.624" as XML has it: "2026-03-14T09:26:53".
std::string xml_time(std::string_view created)
{
    constexpr std::string_view form = "0000/00/00, 00:00:00";
    bool is_good = created.size() >= form.size();
    for (std::size_t i = 0; is_good && i < form.size(); ++i)
        is_good = form[i] == '0' ? created[i] >= '0' && created[i] <= '9' : created[i] == form[i];
    if (!is_good)
        return "1970-01-01T00:00:00";
    std::string time{created.substr(0, 10)};
    std::replace(time.begin(), time.end(), '/', '-');
    return time + 'T' + std::string{created.substr(12, 8)};
}

void add_fact(Suite& suite, const Judgement& judgement)
{
    const Fact& fact = *judgement.fact;
    const std::string value = utf8(value_text(fact));
    const std::string rule = judgement.limit != nullptr ? valid_utf8(judgement.limit->rule)
                                                        : "not a word that says fail";
    if (judgement.outcome == Outcome::broken)
        suite.add(fact.key, "failure",
                  value + " breaks " + rule + formatted(" (line %d)", fact.line));
    else if (judgement.outcome == Outcome::waived)
        suite.add(fact.key, "skipped",
                  value + " breaks " + rule + ", waived until " + judgement.waiver->until + ": " +
                      valid_utf8(judgement.waiver->reason));
    else
        suite.add(fact.key);
}

/// How many findings of a kind and key are test cases of their facts: what was expected of a whole
/// module may have the key of a fact, and more to say than it.
std::map<std::pair<Finding::Kind, std::string>, int> told_with_facts(const Judged& judged)
{
    std::map<std::pair<Finding::Kind, std::string>, int> told;
    for (const Judgement& judgement : judged.judgements) {
        if (judgement.outcome == Outcome::broken)
            ++told[{Finding::Kind::failure, judgement.fact->key}];
        else if (judgement.outcome == Outcome::waived)
            ++told[{Finding::Kind::waived, judgement.fact->key}];
    }
    return told;
}

/// What concerns no single fact: the report as a whole, and modules.
Suite whole_suite(const Judged& judged, const std::string& prefix)
{
    Suite suite{.name = prefix + "report" + simulated_mark(judged.report->is_simulated),
                .cases = {}};
    if (judged.verdict == Verdict::not_a_report)
        suite.add("report", "error", "this is not a report");
    auto told = told_with_facts(judged);
    for (const Finding& finding : judged.findings) {
        const std::string message =
            finding.value + (finding.limit.empty() ? "" : ", expected: ") + finding.limit;
        if (finding.kind == Finding::Kind::incomplete)
            suite.add(formatted("line %d", finding.line), "error", message);
        else if (int& count = told[{finding.kind, finding.key}]; count > 0)
            --count;
        else if (finding.kind == Finding::Kind::failure)
            suite.add(finding.key, "failure", message);
        else if (finding.kind == Finding::Kind::waived)
            suite.add(finding.key, "skipped", message + ", " + finding.reason);
    }
    if (suite.tests == 0)
        suite.add("whole");
    return suite;
}

} // namespace

void begin_junit(TextFile& file)
{
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n");
}

void write_junit(TextFile& file, const Judged& judged)
{
    const Report& report = *judged.report;
    const std::string prefix = valid_utf8(report.name) + ": ";
    const std::string time = xml_time(report.text_of("run/created"));
    whole_suite(judged, prefix).write(file, time);
    for (const std::string& unit : report.units) {
        Suite suite{.name = prefix + unit +
                            (report.find(unit + "/product-number") != nullptr
                                 ? " P/N " + utf8(report.text_of(unit + "/product-number"))
                                 : "") +
                            simulated_mark(report.is_simulated),
                    .cases = {}};
        for (const Judgement& judgement : judged.judgements) {
            if (unit_of(judgement.fact->key) == unit && judgement.outcome != Outcome::not_judged)
                add_fact(suite, judgement);
        }
        suite.write(file, time);
    }
}

void write_unreadable_junit(TextFile& file, const std::string& name)
{
    Suite suite{.name = valid_utf8(name) + ": report", .cases = {}};
    suite.add("report", "error", "cannot be read");
    suite.write(file, xml_time(""));
}

void end_junit(TextFile& file)
{
    file.write("</testsuites>\n");
}

} // namespace companion
