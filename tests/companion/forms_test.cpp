#include "companion/text.h"
#include "tests/companion/companion_trial.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

using nlohmann::json;

namespace
{

const std::string expected_report = std::string{KOV_TEST_DATA} + "/expected_report.txt";

/// What `kov report check` writes of a report in a form ("--json"), to standard output.
std::string form_of(const std::string& file, const char* form, int status)
{
    const KovRun ran = run_kov({"report", "check", "--simulated", form, "-", file});
    EXPECT_EQ(ran.status, status) << ran.err;
    return ran.out;
}

/// A value against a schema, as far as the companion's own schemas go.
void expect_valid(const json& value, const json& schema, const json& root, const std::string& where)
{
    if (schema.contains("$ref")) {
        const auto name = schema["$ref"].get<std::string>();
        expect_valid(value, root["$defs"][name.substr(name.rfind('/') + 1)], root, where);
        return;
    }
    if (schema.contains("const")) {
        EXPECT_EQ(value, schema["const"]) << where;
    }
    if (schema.contains("enum")) {
        EXPECT_EQ(std::count(schema["enum"].begin(), schema["enum"].end(), value), 1) << where;
    }
    const json type = schema.contains("type") ? schema["type"] : json{};
    if (type == "object") {
        for (const auto& name : schema["required"])
            EXPECT_TRUE(value.contains(name)) << where << '/' << name;
        for (const auto& [name, part] : value.items()) {
            ASSERT_TRUE(schema["properties"].contains(name)) << where << '/' << name;
            expect_valid(part, schema["properties"][name], root, where + '/' + name);
        }
    } else if (type == "array") {
        ASSERT_TRUE(value.is_array()) << where;
        for (const json& item : value)
            expect_valid(item, schema["items"], root, where);
    } else if (!type.is_null()) {
        const bool fits = type == "string"    ? value.is_string()
                          : type == "boolean" ? value.is_boolean()
                          : type == "integer" ? value.is_number_integer()
                                              : value.is_number() || value.is_null();
        EXPECT_TRUE(fits) << where << ": " << value;
    }
}

/// The same report with texts in it that try to break out of their places.
std::string nasty_report()
{
    std::string text = contents(expected_report);
    const std::string plain = "KOV-BASE, Base unit 200W, Rev. 1-00";
    text.replace(text.find(plain), plain.size(), "]]>'\"<&\xE4\xFF--> \\ </script>");
    return text;
}

TEST(ReportForms, JsonHoldsEverythingAndFollowsItsSchema)
{
    const json schema =
        json::parse(contents(std::string{KOV_SOURCE_FOLDER} + "/docs/kov-report.schema.json"));
    const TemporaryFile nasty, cut, other;
    write_file(nasty.name(), nasty_report());
    std::string damaged = contents(expected_report).substr(0, 9000) + "\x01\n";
    damaged.replace(damaged.find("number:\t240401") + 8, 6, "\xBB");
    write_file(cut.name(), damaged);
    write_file(other.name(), {"\xFF\x00\n", 3});
    const struct {
        std::string file;
        int status;
        const char* verdict;
    } cases[] = {{expected_report, 1, "FAIL"},
                 {nasty.name(), 1, "FAIL"},
                 {cut.name(), 2, "INCOMPLETE"},
                 {other.name(), 3, "NOT A REPORT"}};
    for (const auto& c : cases) {
        const json written = json::parse(form_of(c.file, "--json", c.status));
        expect_valid(written, schema, schema, c.verdict);
        EXPECT_EQ(written["reports"][0]["verdict"], c.verdict);
    }
    const json report = json::parse(form_of(expected_report, "--json", 1))["reports"][0];
    std::set<std::string> keys;
    for (const json& fact : report["facts"]) {
        EXPECT_TRUE(keys.insert(fact["key"]).second) << "twice: " << fact["key"];
        if (fact["key"] == "slot1/housekeeping/24V") {
            EXPECT_EQ(fact["text"], "24.005V \u00B1 27.21mV (+43.8mV, -52.1mV)");
            EXPECT_EQ(fact["value"], 24.005);
            EXPECT_EQ(fact["samples"], 20);
            EXPECT_NEAR(fact["spread"]["deviation"].get<double>(), 0.02721, 1e-9);
            EXPECT_EQ(fact["band"]["high"], 24.48);
            EXPECT_EQ(fact["outcome"], "kept");
        }
    }
    const json one_missing = json::parse(
        run_kov({"report", "check", "--json", "-", "no-such-file", expected_report}).out);
    expect_valid(one_missing, schema, schema, "unreadable");
    EXPECT_EQ(one_missing["unreadable"], json::array({"no-such-file"}));
    EXPECT_EQ(keys.count("slot1/housekeeping/24V"), 1U);
    EXPECT_EQ(report["findings"][0]["key"], "slot3/steps");
    EXPECT_EQ(report["units"].size(), 5U);
}

/// Elements open and close in order, attributes are quoted, no character is left raw.
void expect_well_formed(std::string_view text, bool is_html)
{
    std::vector<std::string> open;
    const std::set<std::string> alone = {"!DOCTYPE", "meta", "link", "br"};
    for (std::size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
        const std::size_t end = text.find('>', at);
        ASSERT_NE(end, std::string_view::npos);
        const std::string element{text.substr(at + 1, end - at - 1)};
        const std::string name = element.substr(0, element.find_first_of(" /", 1));
        if (element.front() == '/') {
            ASSERT_FALSE(open.empty()) << element;
            EXPECT_EQ(open.back(), element.substr(1));
            open.pop_back();
        } else if (element.front() != '?' && element.back() != '/' &&
                   !(is_html && alone.count(name) != 0)) {
            open.push_back(name);
        }
        EXPECT_EQ(std::count(element.begin(), element.end(), '"') % 2, 0) << element;
        at = end;
        if (name == "style")
            at = text.find("</style", at);
    }
    EXPECT_TRUE(open.empty());
}

TEST(ReportForms, MarkupStaysWellFormedWhateverTheDeviceSays)
{
    const TemporaryFile nasty;
    write_file(nasty.name(), nasty_report());
    for (const char* form : {"--junit", "--html"}) {
        const std::string written = form_of(nasty.name(), form, 1);
        expect_well_formed(written, form == std::string{"--html"});
        EXPECT_THAT(written, Not(HasSubstr("]]>")));
        EXPECT_EQ(written.find_first_of(std::string{"\x01\t\r\x1B\x7F"}), std::string::npos)
            << form;
    }
    const std::string junit = form_of(expected_report, "--junit", 1);
    EXPECT_THAT(junit, HasSubstr(": slot1 P/N 240321 (SIMULATED instrument)\" tests=\""));
    EXPECT_THAT(
        junit,
        HasSubstr(
            "<testcase classname=\"" + expected_report +
            ": report (SIMULATED instrument)\" name=\"slot3/steps\" time=\"0\">\n      <failure "
            "message=\"The device type does not fit the slot, skipped"));
    const std::string page = form_of(nasty.name(), "--html", 1);
    EXPECT_THAT(page, HasSubstr("]]&gt;&#39;&quot;&lt;&amp;\u00E4\u00FF--&gt; \\ &lt;/script&gt;"));
    for (const char* part : {"<strong>FAIL</strong>", "<title>Error of the output voltage</title>",
                             "<title>Output current</title>", "<title>Heater runs</title>",
                             "<span>Signature</span>", "prefers-color-scheme: dark", "size: A4"})
        EXPECT_THAT(page, HasSubstr(part));
    for (const char* outside : {"http:", "https:", "src=", "<script", "@import", "url("})
        EXPECT_THAT(page, Not(HasSubstr(outside)));
}

TEST(ReportForms, PicturesShowWhereValuesLie)
{
    const std::string page = form_of(expected_report, "--html", 1);
    // 24.002 V (+45.5 mV, -50.4 mV), where 23.52 V is at 30 and 24.48 V at 90.
    EXPECT_THAT(page, HasSubstr("<line class=\"reach\" x1=\"57.0\" x2=\"63.0\" y1=\"6\" y2=\"6\"/>"
                                "<rect class=\"value \" x=\"58.1\""));
    // 9 W of 90 W, which are 150.
    EXPECT_THAT(page,
                HasSubstr("height=\"15.0\"/><text class=\"mark\" x=\"419\" y=\"171.0\">9 W<"));
    // The current rises with the voltage, to the right and upwards.
    const std::string line = "<polyline class=\"line\" points=\"";
    std::istringstream points{page.substr(page.find(line) + line.size())};
    double x_before = 0, y_before = 260;
    int count = 0;
    char comma = 0;
    for (double x = 0, y = 0; points >> x >> comma >> y; ++count) {
        EXPECT_GT(x, x_before);
        EXPECT_LT(y, y_before);
        x_before = x;
        y_before = y;
    }
    EXPECT_EQ(count, 20);
}

TEST(ReportForms, JUnitTellsEveryFailureAndWaiver)
{
    const TemporaryFile limits;
    write_file(limits.name(), "slot1/device-type is \"0A0Dh (HVPS)\"\n"
                              "slot0/device-type is other\n"
                              "slot1/product-identification is \"<&>\"\n"
                              "expect slot1 HTCTRL\nexpect slot0 HVPS\n"
                              "waive slot3/steps until 2027-06-30 \"wrong slot\"\n");
    const KovRun ran = run_kov({"report", "check", "--simulated", "--limits", limits.name(),
                                "--junit", "-", "no-such-file", expected_report});
    EXPECT_EQ(ran.status, 3);
    for (const char* part :
         {"<testsuite name=\"no-such-file: report\" tests=\"1\" failures=\"0\" errors=\"1\"",
          "report (SIMULATED instrument)\" tests=\"3\" failures=\"2\" errors=\"0\" skipped=\"1\"",
          "<failure message=\"0A0Dh (HVPS), expected: expect HTCTRL\"",
          "<failure message=\"DB1Ch (HTCTRL), expected: expect HVPS\"",
          "<failure message=\"DB1Ch (HTCTRL) breaks is other (line 120)\"",
          " breaks is &lt;&amp;&gt; (line 147)",
          "expected: tested, since it is there, waived until 2027-06-30: wrong slot\"/>"})
        EXPECT_THAT(ran.out, HasSubstr(part));
}

TEST(ReportForms, AFileThatCannotBeWrittenIsToldAndFails)
{
    const KovRun ran = run_kov({"report", "check", "--json", "no/such/folder", expected_report});
    EXPECT_EQ(ran.status, 3);
    EXPECT_EQ(ran.err, "kov: no/such/folder: No such file or directory\n");
}

TEST(ReportForms, AFullDiskAtStandardOutputIsToldOnce)
{
    const std::string recording = KOV_SOURCE_FOLDER "/tests/fuzz/seeds/recording/voltage_tuning";
    const std::string journal = KOV_SOURCE_FOLDER "/tests/fuzz/seeds/journal/every_kind";
    const std::vector<std::string> cases[] = {
        {"library"},
        {"report", "check", expected_report},
        {"report", "check", "--json", "-", expected_report},
        {"report", "diff", expected_report, expected_report},
        {"report", "trend", expected_report},
        {"report", "limits"},
        {"log", "stats", recording},
        {"log", "csv", recording},
        {"log", "plot", recording},
        {"journal", "show", journal},
        {"journal", "stats", journal},
    };
    for (const std::vector<std::string>& arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const KovRun ran = run_kov(arguments, {.is_full = true});
        EXPECT_EQ(ran.status, 3);
        EXPECT_EQ(ran.err, "kov: -: could not be written completely\n");
    }
}

TEST(ReportForms, WhatIsReadAndReportsAreNeverOverwritten)
{
    const TemporaryFile report, limits, free;
    write_file(report.name(), contents(expected_report));
    write_file(limits.name(), "**/24V 24 V +-2 %\n");
    write_file(free.name(), "kept");
    const std::string folder = std::filesystem::path{report.name()}.parent_path().string() + '/';
    const std::string name = report.name().substr(folder.size());
    const std::vector<std::string> cases[] = {
        {"check", "--json", report.name(), report.name()},
        {"check", "--json", folder + "./" + name, report.name()},
        {"check", "--json", free.name(), "--html", report.name(), expected_report},
        {"check", "--limits", limits.name(), "--junit", limits.name(), expected_report},
        {"check", "--json", free.name(), "--junit", free.name(), expected_report},
        {"check", "--json", folder + "new", "--html", folder + "./new", expected_report},
        {"check", "--json", "-", "--html", "-", expected_report},
        {"trend", "--sql", free.name(), "--html", report.name(), expected_report},
        {"trend", "--limits", limits.name(), "--sql", limits.name(), expected_report},
        {"trend", "--sql", free.name(), "--html", free.name(), expected_report},
    };
    for (std::vector<std::string> arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        arguments.insert(arguments.begin(), "report");
        const KovRun ran = run_kov(arguments);
        EXPECT_EQ(ran.status, 3);
        EXPECT_EQ(ran.out, "");
        EXPECT_THAT(ran.err, testing::AnyOf(HasSubstr("is read"), HasSubstr("is a report"),
                                            HasSubstr("two outputs")));
        EXPECT_EQ(report.text(), contents(expected_report));
        EXPECT_EQ(limits.text(), "**/24V 24 V +-2 %\n");
        EXPECT_EQ(free.text(), "kept");
    }
}

TEST(CompanionText, Encodings)
{
    EXPECT_EQ(companion::utf8("\xB1\xFF\x01\x80"
                              "A"),
              "\u00B1\u00FF??A");
    EXPECT_EQ(companion::valid_utf8("a\u20AC\U0001F600\xC0\xAF\xED\xA0\x80\xFF\n"),
              "a\u20AC\U0001F600???????");
    EXPECT_EQ(companion::escaped_markup("<a b=\"c\">'&"), "&lt;a b=&quot;c&quot;&gt;&#39;&amp;");
    EXPECT_EQ(companion::number_text(0.1), "0.1");
}

} // namespace
