#include "tests/companion/companion_trial.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <algorithm>
#include <fstream>

using companion::Verdict;

namespace
{

TEST(ReportCheck, TellsFaultyInstrumentsFromSoundOnes)
{
    const struct {
        const char* line;
        std::string finding; ///< a part of what is found; empty = it passes
    } cases[] = {
        {"latency 45", ""},
        {"uptime 95", ""},
        {"heater.resistance 6", ""},   // the voltage limit is reached before that of the power
        {"heater.resistance 3.4", ""}, // the limit of the current
        {"slot1.voltage 270", "slot1/output/positive/600V/error: -330 V"},
        {"slot1.current 0", "slot1/output/positive/load: inf GOhm\n"},
        {"slot1.load 1e9", "slot1/output/positive/load: 0.99"},
        {"heater.heat_capacity 1e9", "slot0/heater/unlimited/temperature-span: 0"},
        {"voltage24 24.6", "controller/housekeeping/24V: 24.6"},
        {"reply GetHousekeeping.voltage5 -inf 5",
         "controller/housekeeping/5V0: -infV \xC2\xB1 nan (+nan, -nan)\n"},
        {"reply GetHousekeeping.voltage24 24 nan", "controller/housekeeping/24V: nanV "},
        {"slot0.voltage33 3.22", "slot0/housekeeping/3V3: 3.2"},
        {"slot1.analog_ground 0.5", "slot1/housekeeping/a-gnd: 0.5"},
        {"slot1.cpu_temperature 49", "slot1/housekeeping/CPU: 49"},
        {"fan.measured 700", "controller/fan/speed-error: -1500 rpm"},
        {"reply GetModuleDevType.type@2 4711", "slot2/steps: The device type does not fit"},
        {"reply GetScannedModuleParams.savedProductNo@1 4711", "slot1/scan/product-number: fail"},
        {"slot3.present 2", "the test was aborted: \"Error detected, continuation not possible!\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Scenario lines = {"latency 30", c.line};
        const bool is_of_the_others = lines[1].find("slot3") == 0 || lines[1].find("@2") < 99;
        if (!is_of_the_others)
            lines.insert(lines.begin(), short_run.begin(), short_run.end());
        const JudgedReport judged{acceptance_report(lines)};
        const bool was_aborted = c.finding.find("aborted") != std::string::npos;
        EXPECT_EQ(judged.verdict(), c.finding.empty() ? Verdict::pass
                                    : was_aborted     ? Verdict::incomplete
                                                      : Verdict::fail);
        EXPECT_THAT(judged.findings(), HasSubstr(c.finding));
        EXPECT_EQ(judged.findings().empty(), c.finding.empty()) << judged.findings();
    }
}

TEST(ReportCheck, NamesWhatIsWrongWithTheShippedInstruments)
{
    const struct {
        const char* scenario;
        Verdict verdict;
        std::vector<const char*> findings;
    } cases[] = {
        {"supplies-out-of-tolerance",
         Verdict::fail,
         {"controller/housekeeping/3V3: 3.2", "controller/housekeeping/24V: 24.6",
          "base/housekeeping/CPU: 43", "slot0/housekeeping/5V0: 5.1",
          "slot1/housekeeping/-22V: -23.4", "slot2/housekeeping/1V5: 1.4",
          "slot3/housekeeping/CPU: 8"}},
        // These do not get beyond the product data.
        {"hot-psu",
         Verdict::incomplete,
         {"the test was aborted", "controller/overall-state: 0014h = Error: Overheating",
          "controller/temperature-state/PSU: hot"}},
        {"changed-modules",
         Verdict::incomplete,
         {"controller/module-scan: changed", "slot1/scan/product-number: fail",
          "slot3/scan/product-number: fail", "slot3/scan/hardware-type: fail"}},
        {"wrong-modules",
         Verdict::incomplete,
         {"controller/overall-state: 0011h = Error: Modules",
          "controller/device-state/module-configuration: fail"}},
        {"empty-slots",
         Verdict::incomplete,
         {"controller/module-scan: changed", "slot3/scan/presence: invalid"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.scenario);
        std::ifstream file{std::string{KOV_SOURCE_FOLDER "/simulator/scenarios/"} + c.scenario +
                           ".txt"};
        Scenario lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        const JudgedReport judged{acceptance_report(lines)};
        EXPECT_EQ(judged.verdict(), c.verdict);
        for (const char* finding : c.findings)
            EXPECT_THAT(judged.findings(), HasSubstr(finding));
    }
}

TEST(ReportCheck, PassesSoundInstrumentsWithWhateverModules)
{
    constexpr unsigned units = 5; // base unit, slots 0 to 3
    for (unsigned there = 0; there < 1U << units; ++there) {
        SCOPED_TRACE(there);
        Scenario lines = {"latency 40"};
        for (unsigned unit = 0; unit < units; ++unit)
            lines.push_back("reply GetModulePresence.flags[" + std::to_string((unit + 4) % units) +
                            "] " + std::to_string(there >> unit & 1));
        const JudgedReport judged{acceptance_report(lines)};
        const bool has_module = there >> 1 != 0;
        EXPECT_EQ(judged.findings(), has_module ? "" : "modules: none\n");
    }
}

TEST(ReportCheck, NeverPassesWhatIsNotWhole)
{
    const std::string whole =
        acceptance_report({"latency 40", "uptime 95", "reply GetModulePresence.flags[2] 0",
                           "reply GetModuleDevType.type@3 56092"});
    const JudgedReport judged{whole,
                              "waive slot3/steps until 2026-03-15 \"sits in the wrong slot\"\n"};
    ASSERT_EQ(judged.verdict(), Verdict::pass);
    const auto verdict = [&](std::string bytes) {
        const companion::Report report = companion::read_report("", std::move(bytes));
        return companion::judge(report, judged.limits, {"2026-03-14", true}).verdict;
    };
    for (std::size_t begin = 0; begin < whole.size();) {
        const std::size_t end = whole.find('\n', begin) + 1;
        const std::string line = whole.substr(begin, end - begin);
        const std::string before = whole.substr(0, begin);
        const std::string behind = whole.substr(end);
        EXPECT_NE(verdict(before + behind), Verdict::pass) << "without " << line;
        EXPECT_EQ(verdict(before + line + line + behind), Verdict::incomplete) << "twice " << line;
        EXPECT_EQ(verdict(before + line + "\t?\n" + behind), Verdict::incomplete) << line;
        const bool is_free_text = line.find("Product identification") != std::string::npos ||
                                  line.find("Firmware date") != std::string::npos;
        EXPECT_NE(verdict(before + line.substr(0, line.size() - 1) + "x\n" + behind),
                  is_free_text ? Verdict::incomplete : Verdict::pass)
            << "longer: " << line;
        // Where a line is cut makes no difference, but in the last one.
        const std::size_t step =
            end == whole.size() ? 1 : std::max<std::size_t>(1, line.size() - 1);
        for (std::size_t length = begin; length < end; length += step)
            EXPECT_NE(verdict(whole.substr(0, length)), Verdict::pass) << length;
        begin = end;
    }
    std::string never = whole;
    never.replace(whole.find("20"), whole.find('\n') - whole.find("20"), "never");
    EXPECT_EQ(verdict(never), Verdict::incomplete);
    std::string other_ends;
    for (const char c : whole)
        other_ends += c == '\n' ? std::string{"\r\n"} : std::string{c};
    EXPECT_EQ(verdict(other_ends), Verdict::pass);
}

TEST(ReportCheck, AnAbortedTestIsIncompleteWhereverItEnds)
{
    Trial trial{"latency 40"};
    int made = 0;
    for (const char* function :
         {"GetProductID", "GetModuleFwDate", "GetConfigList", "GetCurrentConfig", "SetEnable",
          "Test", "GetCPUdata", "GetFanData", "GetBaseHousekeeping", "GetHeatCtrlMonitoring",
          "SetHVsupplyMeasRanges", "GetHVsupplyOutputCurrent", "SetHeatCtrlPowerLimit",
          "SetHVsupplyTargetOutputVoltage", "SetCurrentConfig"}) {
        for (const char* when : {" at 1", " at 2", " at 12"}) {
            const std::string bytes = acceptance_report(
                {"latency 40", short_run[0], short_run[1], std::string{"fail "} + function + when});
            if (bytes.find("successfully completed") != std::string::npos)
                continue; // not called that often
            ++made;
            const JudgedReport judged{bytes};
            EXPECT_EQ(judged.verdict(), Verdict::incomplete) << function << when;
            EXPECT_THAT(judged.findings(), HasSubstr("the test was aborted: ")) << function << when;
        }
    }
    EXPECT_GT(made, 25);
}

TEST(ReportCheck, ReadsTheFactsOfAReport)
{
    const JudgedReport judged{contents(std::string{KOV_TEST_DATA} + "/expected_report.txt")};
    const struct {
        const char* key;
        int line;
        const char* value;
        const char* band;
    } cases[] = {
        {"controller/housekeeping/24V", 232, "24.002V \xB1 23.87mV (+45.5mV, -50.4mV)",
         "23.52..24.48 V"},
        {"slot1/housekeeping/-22V", 278, "-22.004V \xB1 69.09mV (+103.6mV, -92.7mV)",
         "-23.1..-20.9 V"},
        {"slot1/output/positive/300V/measured", 0, "300.000V \xB1 10.64mV (+16.5mV, -18.4mV)", ""},
        {"slot1/output/negative/3000V/error", 0, "0.001 V \xB1 0.01093 (+0.0181, -0.0209)",
         "-45..45 V"},
        {"slot1/output/positive/load", 0, "9.99983 GOhm", "5..20 GOhm"},
        {"slot0/heater/power-limited/power", 0, "9.000W \xB1 6.37mW (+12.4mW, -11.7mW)", ""},
        {"slot0/heater/power-limited/limit-error", 0, "0 W \xB1 0.00637 (+0.0124, -0.0117)",
         "-0.18..0.18 W"},
        {"controller/communication/response-time", 222, "5.10ms (5..6ms)", "..50 ms"},
        {"controller/housekeeping/period", 235, "1000ms", "500..2000 ms"},
        {"controller/interlock-state/heat-controller/interlock-1-last", 36, "OK", ""},
        {"controller/uptime", 0, nullptr, ""},
    };
    for (const auto& c : cases) {
        const auto found = std::find_if(
            judged.judged.judgements.begin(), judged.judged.judgements.end(),
            [&](const companion::Judgement& judgement) { return judgement.fact->key == c.key; });
        ASSERT_EQ(found == judged.judged.judgements.end(), c.value == nullptr) << c.key;
        if (c.value == nullptr)
            continue;
        EXPECT_EQ(companion::value_text(*found->fact), c.value) << c.key;
        EXPECT_TRUE(c.line == 0 || found->fact->line == c.line) << found->fact->line << c.key;
        EXPECT_EQ(found->band ? companion::band_text(*found->band, found->fact->unit) : "", c.band)
            << c.key;
    }
}

TEST(ReportCheck, CommandLine)
{
    const TemporaryFile sound, limits, other, mixed;
    std::string report = acceptance_report({"latency 40", short_run[0], short_run[1]});
    write_file(sound.name(), report);
    const std::string mark = ", simulated";
    report.erase(report.find(mark), mark.size()); // of the controller
    write_file(mixed.name(), report);
    write_file(other.name(), "another text\n");
    const struct {
        std::vector<std::string> arguments;
        std::string limits;
        int status;
        const char* told;
    } cases[] = {
        {{"check", sound.name(), "--simulated"}, "", 0, ": PASS (SIMULATED instrument), "},
        {{"check", sound.name()}, "", 1, "FAIL        controller/product-identification  KOV-CTRL"},
        {{"check", mixed.name()}, "", 1, "FAIL        base/product-identification  KOV-BASE"},
        {{"check", sound.name(), other.name(), "--simulated"}, "", 3, ": NOT A REPORT\n"},
        {{"check", "no-such-file"}, "", 3, "kov: no-such-file: No such file or directory\n"},
        {{"check"}, "", 3, "REPORT is required"},
        {{"check", "--what", sound.name()}, "", 3, "--what"},
        {{"check", "--help"}, "", 0, "--limits FILE"},
        {{"limits"}, "", 0, "slot*/output/*/load          5..20 GOhm\n"},
        {{"check", "-v", "--simulated", "--limits", limits.name(), sound.name()},
         "expect slot2 HVPS\n",
         1,
         "  missing  limit: expect HVPS\n"},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "**/24V 24 V +-5 %\nexpect slot2 HVPS\nwaive slot2 until 2026-03-15 \"is being "
         "repaired\"\n",
         0,
         "              waived until 2026-03-15: is being repaired\n"},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "expect slot2 HVPS\nwaive slot2 until 2026-03-14 \"is being repaired\"\n",
         1,
         "FAIL        slot2"},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "\xEF\xBB\xBF**/24V 24 V +-0.2 %\n", // with a byte order mark
         1,
         "limit: 24 V +-0.2 % = 23.952..24.048 V (largest deviation)  line "},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "**/error +-90 V noise 1 mV\n",
         1,
         "limit: +-90 V noise 1 mV = -90..90 V (noise)"},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "slot0/target-heater-* 1..90 W\n",
         1,
         "off  limit: 1..90 W  line "},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "slot0/limits/temperature is \"200.000\u00B0C\"\n",
         0,
         ": PASS "},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "controller/voltage-state/24V 24 V +-5 %\n",
         1,
         "OK  limit: 24 V +-5 %  line "},
        {{"check", "--simulated", "--limits", limits.name(), sound.name()},
         "\ncontroler/** is OK\n",
         1,
         "  nothing was judged  limit: at least one fact that has a limit\n"
         "  note        controler/**                       line 2 of the limits  limit: it fits "
         "no"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments) + c.limits);
        write_file(limits.name(), c.limits);
        std::vector<std::string> arguments = {"report"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const KovRun ran = run_kov(arguments);
        EXPECT_EQ(ran.status, c.status) << ran.out << ran.err;
        EXPECT_THAT(ran.out + ran.err, HasSubstr(c.told));
    }
}

} // namespace
