// Files that cannot be opened, written, stored, read or closed: the user is told, nothing is said
// to be saved that is not, what a file held before is kept, and the rest of the command line is
// carried out.
#include "tests/end_to_end/controller_run.h"
#include "tests/support/full_disk.h"
#include "tests/support/temporary_file.h"

#include <csignal>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using testing::ContainsRegex;
using testing::EndsWith;

#ifdef KOV_UNDER_WINE
using ProgramRun = WindowsRun;
#else
using ProgramRun = ControllerRun;
#endif

namespace
{

struct FileCommand {
    const char* letters;
    const char* file; ///< "" = the command names it itself
    const char* success;
    const char* keys = "";
    bool says_so_anyway = false; ///< kept: a failed close is told, and then the success

    /// What the file held must not be lost before the new one is complete.
    [[nodiscard]] bool keeps_former() const
    {
        return std::string{"-xs -XS1 -y -R"}.find(letters) != std::string::npos;
    }
    /// It never comes to a good end here.
    [[nodiscard]] bool is_aborted() const { return std::string{letters} == "-R"; }
};

void PrintTo(const FileCommand& command, std::ostream* stream)
{
    *stream << command.letters;
}

const FileCommand writing[] = {
    {"-xs", "data", "saved to data file"},
    {"-XS1", "data", "saved to data file"},
    {"-XS", "data", "saved to data file", "", true},
    {"-y", "data", "data saved to", "", true},
    {"-HS", "data", "Data of heat-controller saved to", "xxxx\033", true},
    {"-R", "data", "*** Test protocol aborted", "", true}, // soon, because of the state
    {"-VT1", "", "PWM Period", "Sxxxxs\033", true},
};

const FileCommand reading[] = {
    {"-xl", "current.ini", "loaded from"},
    {"-XL1", "sets.ini", "loaded from"},
    {"-XL", "sets.ini", "loaded from"},
    {"-Y", "memory.txt", "data loaded from", "yy", true},
};

class FileFailures : public testing::TestWithParam<FileCommand>
{
protected:
    FileFailures() : run_{"3 -XC1 -xs current.ini -XS sets.ini -y memory.txt -T", scenario}
    {
        run_.input = run_.output = Launch::Stream::pipe;
        EXPECT_EQ(PseudoTerminal{run_}.exit_status(), 0);
        run_.piped_in = GetParam().keys;
    }

    /// Carries the command out with that file; true when it told of a failure.
    bool fails_with(const std::string& file, unsigned long long longest_file = FullDisk::unlimited)
    {
        const FileCommand& command = GetParam();
        const bool keeps_former = command.keeps_former() && file == command.file;
        const std::string path = run_.folder + '/' + file;
        if (keeps_former) {
            write_file(path, former);
            std::filesystem::remove(path + '~');
        }
        run_.set_command_line(std::string{"3 -XC1 "} + command.letters + ' ' + file + " -PE -T");
        std::string output;
        // Wine itself does not always come up with that little room.
        for (int tries = 0; tries < 3 && output.empty(); ++tries) {
            const FullDisk disk{longest_file};
            PseudoTerminal terminal{run_};
            EXPECT_EQ(terminal.exit_status(), 0);
            output = terminal.piped_out();
        }
        EXPECT_THAT(output, EndsWith("\nDevice type: 8ED6h\nProgram completed\n"));
        const bool told =
            testing::Value(output, ContainsRegex("(Error (open|writ|read|clos)ing|Cannot open|"
                                                 "Cannot close) (the )?data file"));
        const bool done = output.find(command.success) != std::string::npos;
        EXPECT_TRUE(done != told || (done && command.says_so_anyway)) << output;
        if (keeps_former) {
            const bool is_kept = contents(path + '~') == former;
            EXPECT_EQ(is_kept, output.find("The file before is kept as ") != std::string::npos);
            EXPECT_EQ(is_kept || contents(path) == former, told || command.is_aborted()) << output;
        }
        return told;
    }

    ProgramRun run_;

private:
    static constexpr const char* former = "what the file held before, in more than forty bytes";
    static constexpr const char* scenario = "latency 0\nstate.overall 11h\n";
};

using WritingFails = FileFailures;
using ReadingFails = FileFailures;

TEST_P(WritingFails, OnAFullDiskAndWhereNoFileCanBe)
{
    const std::string file = GetParam().file;
    EXPECT_FALSE(fails_with(file));
    for (const unsigned longest_file : {0U, 40U, 200U})
        EXPECT_TRUE(fails_with(file, longest_file)) << longest_file;
    if (file.empty())
        return;
    for (const char* place : {"/dev/full", "/proc/data", ".", "no/such/folder"})
        EXPECT_TRUE(fails_with(place)) << place;
}

#ifndef KOV_UNDER_WINE // whose console ends a program in its own way
TEST(FormerFiles, KeepTheirLinksAndPermissionsAndOutliveASignal)
{
    namespace fs = std::filesystem;
    ControllerRun run{"3 -y data -T", "latency 20"};
    const auto name = [&run](const char* file) { return run.folder + '/' + file; };
    fs::create_directory(name("elsewhere"));
    write_file(name("elsewhere/target"), "before");
    fs::permissions(name("elsewhere/target"), fs::perms{0640});
    fs::create_hard_link(name("elsewhere/target"), name("other"));
    fs::create_symlink("elsewhere/target", name("data"));
    fs::create_symlink("other", name("data~")); // taken
    for (const int signal : {SIGTERM, SIGINT, SIGKILL}) {
        SCOPED_TRACE(signal);
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("Getting memory data, address: 00"));
        EXPECT_TRUE(terminal.modes_are_raw()) << "keys would be echoed into the line";
        terminal.send_signal(signal);
        const bool killed = signal == SIGKILL;
        EXPECT_EQ(terminal.exit_status(), killed ? -signal : 128 + signal);
        EXPECT_EQ(transcript(terminal.screen).find("The file before is kept as 'data~2'") ==
                      std::string::npos,
                  killed);
        EXPECT_EQ(contents(name("data~2")), "before");
        EXPECT_EQ(fs::status(name("data~2")).permissions(), fs::perms{0640});
    }
    EXPECT_EQ(fs::read_symlink(name("data")), "elsewhere/target");
    EXPECT_EQ(fs::hard_link_count(name("other")), 2U);
    EXPECT_EQ(fs::status(name("other")).permissions(), fs::perms{0640});
}
#endif

TEST_P(ReadingFails, WhereNoFileIs)
{
    EXPECT_FALSE(fails_with(GetParam().file));
    for (const char* place : {"missing", ".", "no/such/folder", "/proc/self/mem"})
        EXPECT_TRUE(fails_with(place)) << place;
}

INSTANTIATE_TEST_SUITE_P(Of, WritingFails, testing::ValuesIn(writing));
INSTANTIATE_TEST_SUITE_P(Of, ReadingFails, testing::ValuesIn(reading));

#ifndef KOV_UNDER_WINE // which could not go on without its own files
TEST_P(FileFailures, InEachCall)
{
    run_.environment["LD_PRELOAD"] = FAILING_FILES_LIBRARY;
    // The runtime of the sanitizers need not be the first library.
    run_.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    int call = 0;
    do {
        run_.environment["FAILING_FILE_CALL"] = std::to_string(++call);
    } while (fails_with(GetParam().file));
    EXPECT_GT(call, 2) << "opening and closing at least";
}

INSTANTIATE_TEST_SUITE_P(Writing, FileFailures, testing::ValuesIn(writing));
INSTANTIATE_TEST_SUITE_P(Reading, FileFailures, testing::ValuesIn(reading));

TEST(StuckReport, IsGivenUpAndTheOneBeforeKept)
{
    ControllerRun run{"3 -G -R report -T", "uptime 200\n"};
    run.environment["LD_PRELOAD"] = FAILING_FILES_LIBRARY;
    run.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    run.environment["HANGING_DISK"] = run.folder + "/hangs";
    run.size = {.columns = 140, .rows = 60};
    write_file(run.folder + "/report", "an older report\n");
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.wait_until([&] { return was_called(run, "SetEnable"); }));
    write_file(run.folder + "/hangs", "");
    terminal.send_signal(SIGTERM);
    EXPECT_EQ(terminal.exit_status(), 128 + SIGTERM);
    EXPECT_THAT(terminal.screen.screen(),
                ContainsRegex("State of the instrument: settings restored\n"
                              "Waiting for the data file 'report' to take what is written to it\n"
                              "The file before is kept as 'report~'\n"
                              "Cannot close the data file report\n"));
    EXPECT_EQ(contents(run.folder + "/report~"), "an older report\n");
}
#endif

} // namespace
