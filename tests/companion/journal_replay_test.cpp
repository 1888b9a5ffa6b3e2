// Whatever the program does, it does the same when its library calls are written to a journal, and
// again when the journal answers them: the screen, what goes to standard output, files.
#include "frame/entry.h"
#include "tests/companion/companion_trial.h"
#include "tests/companion/journal_trial.h"
#include "tests/support/trial.h"
#include "tests/torture/torture_run.h"

#include <functional>
#include <map>
#include <set>

namespace
{

/// What is left of a run: its screen, its output and the files that it wrote, which are removed.
std::string traces_of(const std::string& screen, const std::string& output, int exit_status)
{
    const std::set<std::string> files_to_read = {"current.ini", "sets.ini", "memory.txt"};
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator{"."}) {
        const std::string name = entry.path().filename().string();
        if (!files_to_read.contains(name))
            files[name] = contents(name);
    }
    std::string traces = screen + output + std::to_string(exit_status);
    for (const auto& [name, text] : files) {
        traces += '\n' + name + '\n' + text;
        std::filesystem::remove(name);
    }
    return traces;
}

/// Something to run with the functions that the test is linked to (null) or those of a library;
/// returns what is left of it.
using Run = std::function<std::string(const OfferedLibrary* library)>;

void expect_same_in_journal(const Run& run)
{
    const std::string untapped = run(nullptr);
    std::string journal;
    {
        TappedCalls tapped;
        EXPECT_EQ(run(&journal_entries), untapped);
        journal = tapped.journal();
    }
    ReplayedCalls replayed{journal};
    EXPECT_EQ(run(&journal_entries), untapped);
    EXPECT_EQ(replayed.difference(), "");
}

class InJournal : public testing::TestWithParam<std::size_t>
{
};

TEST_P(InJournal, EverySwitchDoesTheSameAlsoWhenCallsFail)
{
    const TemporaryFolder folder;
    make_files_to_read();
    for (const Command& command : commands_of(all_switch_tables()[GetParam()])) {
        const auto compare = [&](const std::vector<std::size_t>& failing) {
            expect_same_in_journal([&](const OfferedLibrary* library) {
                const Outcome outcome = outcome_of(command.switches, failing, library);
                return traces_of(outcome.screen, outcome.output, outcome.exit_status);
            });
        };
        SCOPED_TRACE(command.switches);
        compare({});
        for (const std::size_t number : calls_to_fail(outcome_of(command.switches))) {
            SCOPED_TRACE(number);
            compare({number});
            if (HasFailure())
                return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfTable, InJournal,
                         testing::Range(std::size_t{0}, all_switch_tables().size()));

TEST(InJournal, WholeAcceptanceTestDoesTheSame)
{
    const TemporaryFolder folder;
    expect_same_in_journal([](const OfferedLibrary* library) {
        Trial trial{"latency 10", "noise on", "uptime 100"};
        virtual_platform.library = library;
        trial.run("3 -R report.txt -T");
        EXPECT_THAT(contents("report.txt"), HasSubstr("Test protocol successfully completed"));
        return traces_of(trial.screen(), trial.output(), trial.exit_status);
    });
}

} // namespace
