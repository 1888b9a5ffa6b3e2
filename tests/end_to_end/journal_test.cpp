// kov tap and kov replay as they are used: with the real libraries, in processes of their own.
#include "tests/end_to_end/controller_run.h"

#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

using Stream = Launch::Stream;
using testing::EndsWith;
using testing::HasSubstr;

namespace
{

struct Ran {
    std::string printed, errors;
    int status = 0;
};

/// A folder with a script that the shell runs there; in it $kov and $controller are the programs.
struct ScriptRun : ControllerRun {
    explicit ScriptRun(std::string_view scenario = {}) : ControllerRun{"", scenario}
    {
        Launch::folder = ControllerRun::folder;
        program = "/bin/sh";
        arguments = ControllerRun::folder + "/script";
        input = Stream::null_device;
        output = Stream::pipe;
        environment["kov"] = COMPANION_PROGRAM;
        environment["controller"] = CONTROLLER_PROGRAM;
        environment["forking"] = FORKING_PROGRAM;
        environment["PATH"] = "/usr/bin:/bin";
    }

    Ran run(const std::string& script)
    {
        write_file(arguments, "exec 2>errors\n" + script);
        PseudoTerminal terminal{*this};
        const int status = terminal.exit_status();
        EXPECT_EQ(terminal.terminal_bytes(), "");
        return {terminal.piped_out(), contents(file("errors")), status};
    }
    [[nodiscard]] std::string file(const std::string& name) const
    {
        return Launch::folder + '/' + name;
    }
};

std::ptrdiff_t lines_with(const std::string& text, std::string_view part)
{
    std::ptrdiff_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(JournalOfProgram, PrintsTheSameAndCanBeReplayed)
{
    ScriptRun run{"fail GetEnable at 2\n"};
    for (const std::string switches : {"3 -pk -UY -SE 5 -T", "3 -ms1 -xi -q -T", "3 -?", "0 -p",
                                       "3 -xs set.ini -y memory.txt -T", "3 -no-such", ""}) {
        SCOPED_TRACE(switches);
        const auto traces_of = [&](const std::string& command) {
            for (const char* name : {"set.ini", "memory.txt"})
                std::filesystem::remove(run.file(name));
            const Ran ran = run.run("exec " + command + switches);
            EXPECT_EQ(ran.errors, "");
            return ran.printed + std::to_string(ran.status) + contents(run.file("set.ini")) +
                   contents(run.file("memory.txt"));
        };
        const std::string untapped = traces_of("$controller ");
        for (const char* how : {"tap -o journal", "replay journal", "replay --realtime journal"}) {
            SCOPED_TRACE(how);
            EXPECT_TRUE(traces_of("$kov " + std::string{how} + " -- $controller ") == untapped);
        }
    }
}

TEST(JournalOfProgram, ThatCannotBeWrittenRefusesToStartOrIsToldLater)
{
    ScriptRun run;
    for (const auto& [name, why] : std::vector<std::pair<std::string, std::string>>{
             {"/dev/full", "No space left on device"},
             {"no/such/folder", "No such file or directory"},
             {".", "Is a directory"}}) {
        const Ran ran = run.run("$kov tap -o " + name + " -- $controller 3 -p -T");
        EXPECT_EQ(ran.status, 3);
        EXPECT_EQ(ran.printed, "");
        EXPECT_EQ(ran.errors, "kov: the journal '" + name + "' cannot be written: " + why + '\n');
    }
    // No more than a block of 512 or 1024 bytes fits.
    const Ran ran = run.run("ulimit -f 1; exec $kov tap -o small -- $controller 3 -q -p -p -u -T");
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.printed, EndsWith("Device is disabled\n"));
    EXPECT_EQ(ran.errors, "kov tap: the journal '" + run.file("small") +
                              "' cannot be written any more: File too large; it is not complete\n");
    EXPECT_THAT(run.run("$kov journal show small").printed, HasSubstr("torn off"));
    // Nothing to run, and nothing that could answer.
    EXPECT_EQ(run.run("$kov tap -o other -- no-such-program").status, 127);
    EXPECT_EQ(run.run("KOV_DEVICE_LIBRARY=/not/there $kov tap -o other -- $controller").status, 3);
    const Ran lacking = run.run(
        "sed s/GetBufferState/GetBufferStatX/g ${controller%/*}/libCOM-KOV-CTRL.so >lacking.so\n"
        "KOV_DEVICE_LIBRARY=./lacking.so $kov tap -o other -- $controller 3 -u -T");
    EXPECT_EQ(lacking.errors, "kov: the device library lacks COM_KOV_CTRL_GetBufferState\n");
    EXPECT_EQ(lacking.status, 3);
    for (const std::string arguments : {"tap $controller 3 -?", "replay script $controller", "tap"})
        EXPECT_EQ(run.run("$kov " + arguments).errors,
                  "A program behind -- is required\nRun with --help for more information.\n");
    EXPECT_EQ(run.run("$kov tap other -- true").status, 3);
    EXPECT_EQ(run.run("$kov replay - -- $controller <script").errors,
              "kov: -: there is no such file\n");
    EXPECT_EQ(run.run("$kov tap -o other -- ./script").status, 126);
    // Nothing that the run needs is overwritten.
    run.run("cp ${controller%/*}/libCOM-KOV-CTRL.so real.so; echo >set.ini");
    for (const auto& [name, message] : std::vector<std::pair<std::string, std::string>>{
             {"-", "the journal cannot be written to standard output, which the program has"},
             {"real.so", "real.so: this file is read, so it cannot be written"},
             {"set.ini", "set.ini: this file is read, so it cannot be written"}})
        EXPECT_EQ(run.run("KOV_DEVICE_LIBRARY=./real.so $kov tap -o " + name +
                          " -- $controller 3 -xl set.ini -T")
                      .errors,
                  "kov: " + message + '\n');
    EXPECT_EQ(run.run("$kov journal stats .").errors,
              "kov: ., line 1: it cannot be read: Is a directory\n");
    EXPECT_EQ(run.run("$kov journal show small >/dev/full").errors,
              "kov: -: could not be written completely\n");
    for (const char* name : {"other", "-"})
        EXPECT_FALSE(std::filesystem::exists(run.file(name)));
}

TEST(JournalOfProgram, LeavesTheProgramAsItWas)
{
    ScriptRun run;
    for (const auto& [script, printed] : std::vector<std::pair<std::string, std::string>>{
             {"printf '#!/bin/sh\necho $0' >named; chmod +x named; ln -s named link\n"
              "$kov tap -o j -- ./link; PATH=.:$PATH $kov tap -o j -- link",
              "./link\n./link\n"},
             {"$kov tap -o j -- test -e /proc/self/fd/2 2>&- || echo closed", "closed\n"},
             {"$kov tap -o j -- $forking; echo $?", "0\n"},
             {"for i in 1 2 3 4; do $kov tap -- true; done; ls journal-* | wc -l", "4\n"}}) {
        const Ran ran = run.run(script);
        EXPECT_EQ(ran.printed, printed) << script;
        EXPECT_EQ(ran.errors, "") << script;
    }
}

TEST(JournalOfProgram, IsWholeWhateverTheProgramDoes)
{
    const struct {
        const char* script;
        const char* journal;
        int calls; ///< at least; all of them stand in whole lines
        bool has_end;
    } cases[] = {
        {"$kov tap -o j -- $controller 3 -p -T >&- 2>&- <&-", "j", 10, true},
        {"env -i KOV_SIMULATOR_STATE=none $kov tap -o j -- $controller 3 -p -T", "j", 10, true},
        {"$kov tap -o j -- sh -c '$controller 3 -u -T; $controller 3 -p -T'", "j", 6, true},
        {"$kov tap -o j -- sh -c '$controller 3 -u -T; $controller 3 -p -T'", "j-*", 10, true},
        {"$kov tap -o j -- $forking", "j", 7, true},
        {"$kov tap -o j -- $forking", "j-*", 1, true},
        {"exec 9>j9; $kov tap -o j -- sh -c 'exec $controller 3 -p -T 9>&-'", "j", 10, true},
        {"mkfifo keys; $kov tap -o j -- $controller 3 -PK -T <keys & exec 8>keys\n"
         "until grep -q GetHousekeeping j; do sleep 0.1; done; kill -KILL $!; wait",
         "j", 4, false},
        {"KOV_JOURNAL=j LD_LIBRARY_PATH=${kov%/*}/tap $controller 3 -p -T", "j", 10, true},
        {"KOV_JOURNAL=j KOV_DEVICE_LIBRARY=${kov%/*}/tap/libCOM-KOV-CTRL.so $controller 3 -p -T",
         "j", 10, true},
        {"$kov tap -- $controller 3 -p -T", "journal-COM3-*.jsonl", 10, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.script);
        ScriptRun run;
        run.run(c.script);
        const Ran shown = run.run(std::string{"exec $kov journal show "} + c.journal);
        EXPECT_EQ(shown.errors, "");
        EXPECT_EQ(shown.status, 0);
        EXPECT_GE(lines_with(shown.printed, "("), c.calls) << shown.printed;
        EXPECT_EQ(lines_with(shown.printed, ", the end: "), c.has_end ? 1 : 0) << shown.printed;
    }
}

TEST(ReplayedJournal, AnswersOneProcessAndNoneThatEnds)
{
    ScriptRun run;
    run.run("$kov tap -o j -- $forking; $kov tap -o other -- $controller 3 -u -T");
    for (const auto& [journal, message] : std::vector<std::pair<std::string, std::string>>{
             {"j", "a process that the program has forked calls the device library; those calls "
                   "stand in a journal of their own"},
             {"other", "call 3 differs from the journal: expected GetDevType(), actual "
                       "GetEnable()"}}) {
        const Ran ran = run.run("exec $kov replay " + journal + " -- $forking");
        EXPECT_EQ(ran.errors, "kov replay: " + message + '\n');
        EXPECT_EQ(ran.status, 120);
    }
}

TEST(ReplayedJournal, EndsWithADifferenceToldBelowARestoredTerminal)
{
    ScriptRun recorded;
    recorded.run("$kov tap -o j -- $controller 3 -PK -T");
    ControllerRun run{""};
    run.size = {.columns = 120, .rows = 40};
    run.program = COMPANION_PROGRAM;
    run.arguments =
        "replay " + recorded.file("j") + " -- " + std::string{CONTROLLER_PROGRAM} + " 3 -PK -T";
    PseudoTerminal terminal{run};
    EXPECT_EQ(terminal.exit_status(), 120);
    expect_terminal_restored(terminal);
    EXPECT_THAT(terminal.screen.screen(),
                HasSubstr(std::string{housekeeping_values} +
                          "kov replay: call 5 differs from the journal: expected Close(), actual "
                          "GetHousekeeping()\n"));
}

} // namespace
