#include "companion/command_line.h"

#include "companion/journal/commands.h"
#include "companion/library.h"
#include "companion/log/commands.h"
#include "companion/report/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <functional>
#include <sstream>

namespace companion
{

namespace
{

/// What the command line asks for; the one of its subcommands that was given sets it.
using Action = std::function<int(const Surroundings&)>;

CLI::App* add_command(CLI::App& parent, const char* name, const char* description)
{
    CLI::App* command = parent.add_subcommand(name, description);
    command->set_version_flag("--version", "kov " KOV_VERSION);
    return command;
}

void add_limits_option(CLI::App* command, std::string& file)
{
    command->add_option("--limits", file, "Judge by the limits of this file")->type_name("FILE");
}

void add_check(CLI::App& report, CheckRequest& request, Action& action)
{
    CLI::App* command = add_command(report, "check", "Judge reports: PASS, FAIL or INCOMPLETE");
    add_limits_option(command, request.limits);
    command->add_option("--json", request.json, "Write JSON")->type_name("OUT");
    command->add_option("--junit", request.junit, "Write JUnit XML")->type_name("OUT");
    command->add_option("--html", request.html, "Write a page to read and to print")
        ->type_name("OUT");
    command->add_flag("-v,--verbose", request.all_facts, "Show all facts");
    command->add_flag("--simulated", request.accept_simulated,
                      "Let reports of the simulated instrument pass");
    command->add_option("REPORT", request.reports, "Report files, - for standard input")
        ->required()
        ->type_name("");
    command->callback([&] {
        action = [&](const Surroundings& outside) { return check_reports(request, outside); };
    });
}

void add_diff(CLI::App& report, DiffRequest& request, Action& action)
{
    CLI::App* command = add_command(report, "diff", "What changed between two reports");
    add_limits_option(command, request.limits);
    command->add_option("OLD", request.before, "The older report")->required()->type_name("");
    command->add_option("NEW", request.now, "The newer report")->required()->type_name("");
    command->callback([&] {
        action = [&](const Surroundings& outside) { return compare_reports(request, outside); };
    });
}

void add_trend(CLI::App& report, TrendRequest& request, Action& action)
{
    CLI::App* command = add_command(report, "trend", "How values move from report to report");
    add_limits_option(command, request.limits);
    command->add_option("--key", request.key, "Show the keys that fit this pattern")
        ->type_name("GLOB");
    command->add_option("--html", request.html, "Write a page to read and to print")
        ->type_name("OUT");
    command->add_option("--sql", request.sql, "Write SQL for SQLite")->type_name("OUT");
    command->add_option("FOLDER-OR-REPORT", request.sources, "Reports, or folders of them")
        ->required()
        ->type_name("");
    command->callback([&] {
        action = [&](const Surroundings& outside) { return follow_reports(request, outside); };
    });
}

void add_limits(CLI::App& report, std::string& file, Action& action)
{
    CLI::App* command = add_command(report, "limits", "Print the limits in force");
    add_limits_option(command, file);
    command->callback(
        [&] { action = [&](const Surroundings& outside) { return print_limits(file, outside); }; });
}

void add_stats(CLI::App& log, std::vector<std::string>& files, Action& action)
{
    CLI::App* command = add_command(log, "stats", "Statistics of each quantity");
    command->add_option("FILE", files, "Recordings, - for standard input")
        ->required()
        ->type_name("");
    command->callback([&] {
        action = [&](const Surroundings& outside) { return show_statistics(files, outside); };
    });
}

struct TableRequest {
    std::string file, out;
};

void add_csv(CLI::App& log, TableRequest& request, Action& action)
{
    CLI::App* command = add_command(log, "csv", "A recording as one table with dates");
    command->add_option("-o,--output", request.out, "Write into this file")->type_name("OUT");
    command->add_option("FILE", request.file, "The recording, - for standard input")
        ->required()
        ->type_name("");
    command->callback([&] {
        action = [&](const Surroundings& outside) {
            return write_table(request.file, request.out, outside);
        };
    });
}

/// Also a command without "--" tells what is missing, and not that the program was not expected.
void check_program(const std::vector<std::string>& program, const CLI::App& command)
{
    if (program.empty())
        throw CLI::RequiredError("A program behind --");
    if (const std::vector<std::string> others = command.remaining(); !others.empty())
        throw CLI::ExtrasError(others);
}

void add_tap(CLI::App& app, TapRequest& request, Action& action)
{
    CLI::App* command = add_command(app, "tap", "Run a program, with a journal of library calls");
    command->add_option("-o", request.file, "Write the journal to this file")->type_name("FILE");
    command->footer("The program and its arguments stand behind --.");
    command->allow_extras();
    command->callback([&, command] {
        check_program(request.program, *command);
        action = [&](const Surroundings& outside) { return tap_program(request, outside); };
    });
}

void add_replay(CLI::App& app, ReplayRequest& request, Action& action)
{
    CLI::App* command = add_command(app, "replay", "Run a program that a journal answers");
    command->add_flag("--realtime", request.in_real_time, "Let each call take its time");
    command->add_option("FILE", request.file, "The journal")->required()->type_name("");
    command->footer("The program and its arguments stand behind --.");
    command->allow_extras();
    command->callback([&, command] {
        check_program(request.program, *command);
        action = [&](const Surroundings& outside) { return replay_journal(request, outside); };
    });
}

void add_journal(CLI::App& app, ShowRequest& request, Action& action)
{
    CLI::App* journal = add_command(app, "journal", "Journals of library calls");
    journal->require_subcommand(1);
    CLI::App* show = add_command(*journal, "show", "Print the calls");
    show->add_flag("--failures", request.only_failures, "Only those that failed");
    CLI::App* stats = add_command(*journal, "stats", "Counts, rates and durations by function");
    for (CLI::App* command : {show, stats})
        command->add_option("FILE", request.file, "The journal, - for standard input")
            ->required()
            ->type_name("");
    show->callback([&] {
        action = [&](const Surroundings& outside) { return show_journal(request, outside); };
    });
    stats->callback([&] {
        action = [&](const Surroundings& outside) { return count_journal(request.file, outside); };
    });
}

struct JournalRequests {
    TapRequest tap;
    ReplayRequest replay;
    ShowRequest show;
};

void add_journals(CLI::App& app, JournalRequests& requests, Action& action)
{
    add_tap(app, requests.tap, action);
    add_replay(app, requests.replay, action);
    add_journal(app, requests.show, action);
}

/// Takes what stands behind "--" away: the program that is to run, with its arguments.
std::vector<std::string> take_program(std::vector<std::string>& arguments)
{
    const auto separator = std::ranges::find(arguments, "--");
    if (arguments.empty() || separator == arguments.end() ||
        (arguments.front() != "tap" && arguments.front() != "replay"))
        return {};
    std::vector<std::string> program{separator + 1, arguments.end()};
    arguments.erase(separator, arguments.end());
    return program;
}

void add_plot(CLI::App& log, PlotRequest& request, Action& action)
{
    CLI::App* command =
        add_command(log, "plot", "Draw recordings, or reports of the acceptance test");
    command->add_option("-o,--output", request.out, "Draw into this file: .html, .svg or .png")
        ->type_name("OUT");
    const char* time = "TIME";
    command->add_option("--from", request.from, "Begin so many seconds after the start, or then")
        ->type_name(time);
    command->add_option("--to", request.to, "End so many seconds after the start, or then")
        ->type_name(time);
    command->add_option("--only", request.only, "Draw these quantities")
        ->type_name("QUANTITY,...")
        ->delimiter(',')
        ->take_all()
        ->allow_extra_args(false);
    command->add_option("FILE", request.files, "Recordings or reports; - for standard input")
        ->required()
        ->type_name("");
    command->callback(
        [&] { action = [&](const Surroundings& outside) { return plot(request, outside); }; });
}

struct LogRequests {
    std::vector<std::string> files;
    TableRequest table;
    PlotRequest plot;
};

void add_log(CLI::App& app, LogRequests& requests, Action& action)
{
    CLI::App* log = add_command(app, "log", "What the utility recorded");
    log->require_subcommand(1);
    add_stats(*log, requests.files, action);
    add_csv(*log, requests.table, action);
    add_plot(*log, requests.plot, action);
}

} // namespace

int run(std::vector<std::string> arguments, const Surroundings& outside)
{
    const std::vector<std::string> program = take_program(arguments);
    CLI::App app{"Judges and draws what KOV-Controller wrote", "kov"};
    app.allow_windows_style_options(false); // a path may begin with a slash there, too
    app.set_version_flag("--version", "kov " KOV_VERSION);
    app.require_subcommand(1);
    Action action;
    add_command(app, "library", "Which device library the utility would load")->callback([&] {
        action = show_library;
    });
    CLI::App* report = add_command(app, "report", "Reports of the acceptance test");
    report->require_subcommand(1);
    CheckRequest check;
    add_check(*report, check, action);
    DiffRequest diff;
    add_diff(*report, diff, action);
    TrendRequest trend;
    add_trend(*report, trend, action);
    std::string limits_file;
    add_limits(*report, limits_file, action);
    LogRequests log;
    add_log(app, log, action);
    JournalRequests journal{.tap = {.program = program}, .replay = {.program = program}};
    add_journals(app, journal, action);

    try {
        app.parse(std::vector<std::string>{arguments.rbegin(), arguments.rend()});
        return action(outside);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out, err;
        const int status = app.exit(error, out, err);
        (void)outside.out(out.str());
        (void)outside.err(err.str());
        return status == 0 ? 0 : wrong_usage;
    } catch (const std::exception& error) {
        outside.complain(error.what());
        return wrong_usage;
    }
}

} // namespace companion
