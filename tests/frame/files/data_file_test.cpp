#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <filesystem>

namespace
{

constexpr const char* failing_backup = "fail GetMemoryData at 2";

/// Runs one command, after two sets have been made; its last line.
std::string last_line_of(const std::string& command, const std::string& line)
{
    Trial trial{"latency 0"};
    if (!line.empty())
        trial.instrument(line);
    trial.run("3 -XC1 -XC2 " + command + " -T");
    std::string display = trial.display();
    display.pop_back();
    return display.substr(display.rfind('\n') + 1);
}

std::string kept_as(const std::string& name)
{
    return "{Y}The file before is kept as '" + name + "'{.}";
}

TEST(OutputFile, TheOneBeforeIsKeptUntilTheNewOneIsComplete)
{
    const TemporaryFolder folder;
    const struct {
        const char* command;
        const char* line; ///< of the scenario
        const char* last_line;
    } cases[] = {
        {"-y data", "", "Memory data saved to file 'data'"},
        {"-xs data", "", "Current configuration saved to data file 'data'"},
        {"-XS2 data", "", "Configuration #2 saved to data file 'data'"},
        {"-XS data", "", "Configuration #2 saved to data file 'data'"},
        {"-y data", failing_backup, nullptr},
        {"-XS data", "fail GetConfigName at 2", nullptr},
        {"-R data", "state.overall 11h", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string{c.command} + ", " + c.line);
        const bool complete = c.last_line != nullptr;
        write_file("data", "before");
        EXPECT_EQ(last_line_of(c.command, c.line), complete ? c.last_line : kept_as("data~"));
        EXPECT_EQ(contents("data~"), complete ? "" : "before");
        EXPECT_NE(contents("data"), "before");
        EXPECT_EQ(std::filesystem::exists("data~"), !complete);
        std::filesystem::remove("data~");
    }
}

TEST(OutputFile, KeepsWhatIsCompleteAndNobodyElsesFile)
{
    const TemporaryFolder folder;
    write_file("data", "before");
    EXPECT_EQ(last_line_of("-y data", failing_backup), kept_as("data~"));
    EXPECT_EQ(last_line_of("-y data", "fail GetMemoryData at 4"), kept_as("data~"));
    EXPECT_EQ(contents("data~"), "before") << "not what the first one left";
    (void)last_line_of("-y data", "");
    EXPECT_FALSE(std::filesystem::exists("data~"));

    const std::string complete = contents("data");
    write_file("data~", "an editor's");
    EXPECT_EQ(last_line_of("-y data", failing_backup), kept_as("data~2"));
    (void)last_line_of("-xs data", "");
    EXPECT_EQ(contents("data~"), "an editor's");
    EXPECT_FALSE(std::filesystem::exists("data~2"));
    EXPECT_EQ(complete.size(), 262'304U * 3);
}

TEST(OutputFile, ShortensANameThatHasNoRoomForOneMoreCharacter)
{
    const TemporaryFolder folder; // the name's last character has two bytes
    const std::string beginning(253, 'n');
    write_file(beginning + "\xC3\xA9", "before");
    (void)last_line_of("-y " + beginning + "\xC3\xA9", failing_backup);
    EXPECT_EQ(contents(beginning + '~'), "before");
}

} // namespace
