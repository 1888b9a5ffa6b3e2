#include "tests/companion/companion_trial.h"

#include "companion/command_line.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

const Scenario short_run = {"reply GetModulePresence.flags[2] 0",
                            "reply GetModulePresence.flags[3] 0"};

std::string acceptance_report(const Scenario& lines)
{
    const TemporaryFile report;
    Trial trial{"latency 10", "noise on", "uptime 100"};
    for (const std::string& line : lines)
        trial.instrument(line);
    trial.run("3 -q -R " + report.name() + " -T");
    std::string text = report.text();
    std::erase(text, '\r'); // of Windows
    return text;
}

JudgedReport::JudgedReport(std::string bytes, const std::string& text)
    : report{companion::read_report("report.txt", std::move(bytes))}
{
    std::string problem;
    EXPECT_TRUE(companion::read_limits(companion::default_limits() + text, limits, problem))
        << problem;
    judged = companion::judge(report, limits, {.today = "2026-03-14", .accept_simulated = true});
}

std::string JudgedReport::findings() const
{
    using Kind = companion::Finding::Kind;
    std::string text;
    for (const companion::Finding& finding : judged.findings) {
        if (finding.kind == Kind::incomplete || finding.kind == Kind::failure)
            text += finding.key + ": " + finding.value + '\n';
    }
    return text;
}

KovRun run_kov(const std::vector<std::string>& arguments, const TerminalOfKov& terminal)
{
    KovRun ran;
    const auto into = [](std::string& text, bool is_full) {
        return [&text, is_full](std::string_view bytes) {
            text += is_full ? "" : bytes;
            return !is_full;
        };
    };
    ran.status = companion::run(arguments, {into(ran.out, terminal.is_full), into(ran.err, false),
                                            terminal.colored, "2026-03-14", terminal.columns,
                                            terminal.has_utf8});
    return ran;
}
