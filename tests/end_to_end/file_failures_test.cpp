// Files that cannot be opened, written, stored, read or closed: the user is told, nothing is said
// to be saved that is not, and the rest of the command line is carried out.
#include "tests/end_to_end/controller_run.h"
#include "tests/support/full_disk.h"
#include "tests/support/temporary_file.h"

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
        return told;
    }

    ProgramRun run_;

private:
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
#endif

} // namespace
