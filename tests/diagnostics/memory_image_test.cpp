#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <cstdio>

namespace
{

constexpr int lines = 262'304;
constexpr int lines_of_memory = 0x40000;

/// An image in which every byte depends on its address; `format` writes one.
std::string image(const char* format, int count)
{
    std::string text;
    char line[16];
    for (int address = 0; address < count; ++address) {
        const int byte = address < lines_of_memory ? (address * 7 + address / 256) & 0xFF : 0xFF;
        std::snprintf(line, sizeof line, format, byte);
        text += line;
    }
    return text;
}

void run(Trial& trial, const TemporaryFile& file, const std::string& switches)
{
    trial.run("3 " + switches + " '" + file.name() + "' -T");
}

TEST(MemoryImage, FilesRestoredAndSavedAgain)
{
    const std::string loaded = "Memory data loaded from file '";
    const std::string warning = "{Y}Warning: Data file '";
    const std::string error = "\n{M}Error reading the data file '";
    const std::string good = image("%02X\n", lines);
    const struct {
        const char* what;
        std::string text;
        std::ptrdiff_t blocks;
        std::string end;
        std::string next; ///< behind the file's name
    } cases[] = {
        {"as it is saved", good, 1171, ":\n" + loaded, "'\n"},
        {"other line ends and case, no last one", image("%02x \r\n", lines - 1) + "fF", 1171,
         ":\n" + loaded, "'\n"},
        {"single digits", image("\t%X\n\n", lines) + " \n", 1171, ":\n" + loaded, "'\n"},
        {"too long", good + "FF\n", 1171, ":\n" + warning, "' too long{.}\nMemory data loaded"},
        {"short by one", image("%02X\n", lines - 1), 1170, "3FFC0h" + error, "\'{.}\n"},
        {"empty", "", 0, "00000h" + error, "\'{.}\n"},
        {"broken", image("%02X\n", 500) + "G0\n" + good, 2, "001C0h" + error, "\'{.}\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Trial trial;
        trial.pipe_in("yy");
        const TemporaryFile file;
        write_file(file.name(), c.text);
        run(trial, file, "-Y");
        EXPECT_THAT(trial.screen(), HasSubstr(c.end + file.name() + c.next));
        EXPECT_EQ(trial.calls_of("SetMemoryData("), c.blocks);
        EXPECT_EQ(trial.calls_of("UpdateMemoryData("), c.blocks == 1171 ? 1 : 0);
        if (c.blocks < 1171)
            continue;
        write_file(file.name(), "");
        run(trial, file, "-y");
        EXPECT_TRUE(file.text() == good);
        EXPECT_EQ(trial.display(),
                  "Saving memory data (size=40000h):\nMemory data saved to file '" + file.name() +
                      "'\n");
    }
}

TEST(MemoryImage, Answers)
{
    const std::string first = "Restore memory data? [y/n]: ";
    const std::string second = "All memory data will be overwritten, proceed? [y/n]: ";
    const struct {
        const char* keys;
        std::string display;
    } cases[] = {
        {"n", first + "n - cancelled\n"},
        {"\n", first + " - cancelled\n"},
        {"", first.substr(0, first.size() - 1) + "\n"},
        {"y\nx", first + "y\n" + second + "x - cancelled\n"},
        {"Y", first + "Y\n" + second.substr(0, second.size() - 1) + "\n"},
    };
    for (const auto& c : cases) {
        Trial trial;
        trial.pipe_in(c.keys);
        trial.run("3 -q -Y /dev/null -T");
        EXPECT_EQ(trial.display(), c.display);
    }
    Trial typed_ahead;
    typed_ahead.type(0, "yy");
    typed_ahead.type(100, "n");
    typed_ahead.run("3 -Y /dev/null -T");
    EXPECT_EQ(typed_ahead.display(), first + "n - cancelled\n");
}

TEST(MemoryImage, Failures)
{
    const struct {
        const char* switches;
        const char* line; ///< of the scenario
        const char* part; ///< of the display
        std::ptrdiff_t calls;
    } cases[] = {
        {"-y", "fail GetMemoryData at 3", "Getting memory data, address: 001C0h\n{M}2026", 3},
        {"-Y", "fail SetMemoryData at 3", "Setting memory data, address: 001C0h\n{M}2026", 3},
        {"-Y", "fail UpdateMemoryData always", "(size=40000h):\n{M}2026", 1171},
        {"-y", "block GetMemoryData for 100",
         "\nSaving memory data stopped at address: 00380h, {Y}interrupted{.}\n", 4},
        {"-Y", "block SetMemoryData for 100",
         "\nLoading memory data stopped at address: 00380h, {Y}interrupted{.}\n", 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.part);
        Trial trial{c.line};
        trial.pipe_in("yy");
        virtual_platform.signals = {{.at_ms = 350, .number = 15}};
        const TemporaryFile file;
        write_file(file.name(), image("%02X\n", lines));
        run(trial, file, c.switches);
        EXPECT_THAT(trial.display(), HasSubstr(c.part));
        EXPECT_EQ(trial.calls_of("GetMemoryData(") + trial.calls_of("SetMemoryData("), c.calls);
        EXPECT_THAT(trial.display(), Not(HasSubstr("Memory data ")));
    }
}

} // namespace
