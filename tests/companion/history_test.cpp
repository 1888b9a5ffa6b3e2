#include "tests/companion/companion_trial.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <algorithm>

namespace
{

/// A report of the short run with more lines, in a file.
void write_report(const std::string& name, Scenario lines)
{
    lines.insert(lines.end(), short_run.begin(), short_run.end());
    lines.emplace_back("latency 40");
    write_file(name, acceptance_report(lines));
}

TEST(ReportDiff, FindsShiftsAtTheirKeysOnly)
{
    const TemporaryFile before, after;
    write_report(before.name(), {});
    const struct {
        Scenario lines;
        int status;
        const char* shown; ///< behind the lines on the reports
    } cases[] = {
        {{"uptime 300"}, 0, "no drift\n"},
        {{"slot1.voltage18 17.85"}, 1, "P/N 240321, slot1:\n  drift    housekeeping/18V: 17.995V "},
        {{"slot1.load 8e9"}, 1, "P/N 240321, slot1:\n  drift    output/positive/load: "},
        {{"slot0.firmware_version 0105h", "uptime 300"},
         0,
         "P/N 240211, slot0:\n  version  firmware-version: 1-04 -> 1-05\nno drift\n"},
        {{"reply GetModuleProductNo.number@1 4711"}, 0, "P/N 4711, slot1: new\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        write_report(after.name(), c.lines);
        const KovRun ran = run_kov({"report", "diff", before.name(), after.name()});
        EXPECT_EQ(ran.status, c.status) << ran.err;
        EXPECT_THAT(ran.out, HasSubstr(c.shown));
        if (c.lines.front() == "slot1.voltage18 17.85") {
            EXPECT_EQ(std::count(ran.out.begin(), ran.out.end(), '\n'), 6) << ran.out;
        }
    }
    EXPECT_EQ(run_kov({"report", "diff", before.name(), "no-such-file"}).status, 3);
    write_file(after.name(), "Test protocol created on \n");
    EXPECT_EQ(run_kov({"report", "diff", before.name(), after.name()}).status, 2);
}

TEST(ReportDiff, TellsWhatBreaksALimitAndWhatIsWaived)
{
    const std::string before = std::string{KOV_TEST_DATA} + "/expected_report.txt";
    const std::string key = "controller/communication/response-time";
    const TemporaryFile after, limits;
    const struct {
        const char *now, *rules;
        int status;
        const char* shown;
    } cases[] = {
        {"45.00ms (44..46ms)", "..50 ms\n", 1, ": 5.10ms (5..6ms) -> 45.00ms (44..46ms)"},
        {"5.50ms (5..7ms)", "..8 ms\n", 0, "no drift\n"},
        {"5.50ms (5..7ms)", "..6 ms\n", 1, "  limit: ..6 ms  marginal -> broken\n"},
        {"5.50ms (5..7ms)", "..6 ms\nwaive controller/** until 2027-06-30 \"slow port\"\n", 0,
         "(SIMULATED instrument)\n  waived      controller/communication/response-time  5.50ms"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rules);
        std::string text = contents(before);
        const std::string old = "5.10ms (5..6ms)";
        write_file(after.name(), text.replace(text.find(old), old.size(), c.now));
        write_file(limits.name(), key + ' ' + c.rules);
        const KovRun ran =
            run_kov({"report", "diff", "--limits", limits.name(), before, after.name()});
        EXPECT_EQ(ran.status, c.status) << ran.err;
        EXPECT_THAT(ran.out, HasSubstr(c.shown));
    }
    // The last of them is waived in the course of reports, too.
    const KovRun ran = run_kov({"report", "trend", "--limits", limits.name(), after.name()});
    EXPECT_THAT(ran.out, HasSubstr("In 1 of 1 reports: P/N 240101 " + key +
                                   " waived until 2027-06-30: slow port\n"));
}

TEST(ReportDiff, FollowsAModuleThatMoved)
{
    // The modules of the slots 1 and 2 have changed places.
    const TemporaryFile before, after;
    Scenario lines = {"latency 40", short_run[1]};
    write_file(before.name(), acceptance_report(lines));
    const auto moved = [&](const char* from, const char* number, const char* type) {
        const std::string at = std::string{"@"} + from + ' ';
        lines.push_back("reply GetModuleProductNo.number" + at + number);
        lines.push_back("reply GetModuleHwType.type" + at + type);
        for (const char* which : {"scanned", "saved"}) {
            lines.push_back("reply GetScannedModuleParams." + std::string{which} + "ProductNo" +
                            at + number);
            lines.push_back("reply GetScannedModuleParams." + std::string{which} + "HwType" + at +
                            type);
        }
    };
    moved("1", "240322", "051C8BB8h");
    moved("2", "240321", "411C87D0h");
    write_file(after.name(), acceptance_report(lines));
    const KovRun ran = run_kov({"report", "diff", before.name(), after.name()});
    EXPECT_THAT(ran.out, HasSubstr("P/N 240322, slot1, before in slot2:\n"));
    EXPECT_THAT(ran.out, HasSubstr("P/N 240321, slot2, before in slot1:\n"));

    // Both have one number: each is that of its slot.
    std::string text = contents(before.name());
    for (std::size_t at = text.find("240322"); at != std::string::npos; at = text.find("240322"))
        text.replace(at, 6, "240321");
    write_file(after.name(), text);
    const std::string mark = " (SIMULATED instrument)\n";
    const KovRun same = run_kov({"report", "diff", after.name(), after.name()});
    EXPECT_THAT(same.out, EndsWith(after.name() + mark + after.name() + mark + "no drift\n"));
    const KovRun course = run_kov({"report", "trend", "--key", "**/CPU/load", after.name()});
    for (const char* slot : {"slot1", "slot2"})
        EXPECT_THAT(course.out, HasSubstr("P/N 240321 in " + std::string{slot} +
                                          ", one of several with this number" + mark));
}

TEST(ReportDiff, SoundRunsPassAndDoNotDrift)
{
    const TemporaryFile before, after;
    constexpr int runs = 201;
    for (int run = 0; run < runs; ++run) {
        // Noise follows the time since the start.
        const std::string& name = run % 2 == 0 ? before.name() : after.name();
        write_report(name, {"uptime " + std::to_string(500 + 7 * run)});
        EXPECT_EQ(JudgedReport{contents(name)}.findings(), "") << run;
        if (run == 0)
            continue;
        const KovRun ran = run_kov({"report", "diff", before.name(), after.name()});
        EXPECT_EQ(ran.status, 0) << run << '\n' << ran.out << ran.err;
    }
}

TEST(ReportTrend, TellsWhatMovesAndWhatLeavesItsBandFirst)
{
    const TemporaryFolder folder;
    constexpr int reports = 6;
    std::filesystem::create_directory("reports");
    for (int i = 0; i < reports; ++i) {
        const std::string name = "reports/" + std::to_string(reports - 1 - i) + ".txt";
        write_report(name, {"slot1.voltage18 " + std::to_string(18.0 - 0.02 * i)});
        std::string text = contents(name);
        text.replace(text.find("/03/14,"), 7, "/03/1" + std::to_string(i) + ',');
        write_file(name, text);
    }
    write_file("reports/notes.txt", "not a report\n");
    const KovRun ran = run_kov({"report", "trend", "reports"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, StartsWith("6 reports\n"));
    EXPECT_THAT(ran.out, HasSubstr(" a day  \u2588\u2587"));
    EXPECT_THAT(ran.out, HasSubstr("\u2582\u2581\n"));
    EXPECT_THAT(ran.out, HasSubstr("First to leave its band if it goes on: P/N 240321 "
                                   "housekeeping/18V, in 1"));
    const KovRun one = run_kov(
        {"report", "trend", "--key", "slot1/CPU/load", "--html", "page.html", "reports/0.txt"});
    EXPECT_THAT(one.out, HasSubstr("1 reports\nP/N 240321 (SIMULATED instrument)\n  CPU/load "));
    EXPECT_THAT(one.out, EndsWith("Nothing moves towards the end of its band.\n"));
    EXPECT_THAT(contents("page.html"), HasSubstr("<svg class=\"trend\""));
    EXPECT_THAT(contents("page.html"), HasSubstr("<h2>P/N 240321 (SIMULATED instrument)</h2>"));
    const KovRun plain = run_kov({"report", "trend", "--key", "slot1/housekeeping/18V", "reports"},
                                 {.has_utf8 = false});
    EXPECT_THAT(plain.out, HasSubstr(" a day  #"));
    EXPECT_THAT(plain.out, HasSubstr("_\n"));
    const KovRun degrees =
        run_kov({"report", "trend", "--key", "slot1/**/CPU", "reports/0.txt"}, {.has_utf8 = false});
    EXPECT_THAT(degrees.out, HasSubstr("degC  +0 a day"));
    EXPECT_EQ(run_kov({"report", "trend", "reports/notes.txt"}).status, 3);
    write_file("never.txt", "Test protocol created on never\n");
    EXPECT_EQ(run_kov({"report", "trend", "never.txt"}).err,
              "kov: never.txt: INCOMPLETE, left out\nkov: none of these is a complete report\n");

    const std::string sql = run_kov({"report", "trend", "--sql", "-", "reports"}).out;
    EXPECT_THAT(sql, StartsWith("BEGIN;\nCREATE TABLE IF NOT EXISTS reports "));
    EXPECT_THAT(sql, HasSubstr("'slot1', '240321', 'KOV-HVPS, HV-Supply 3000V bipolar, Rev. 1-01"));
    EXPECT_THAT(sql, EndsWith("COMMIT;\n"));
}

} // namespace
