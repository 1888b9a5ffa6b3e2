#include "frame/command_line.h"
#include "frame/entry.h"
#include "frame/terminal/console.h"
#include "frame/usage.h"
#include "tests/support/trial.h"

#include <set>
#include <string>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

struct BadLine {
    const char* arguments;
    int position;
    const char* shown;
    bool port_opened = false;
};

constexpr const char* missing = "argument not available";

constexpr BadLine bad_lines[] = {
    // clang-format off
    {"x", 2, missing}, {"x -p", 2, "-p"}, {"-?", 2, missing}, {"3 p", 2, "p"}, {"3 -", 2, "-"},
    {"3 ''", 2, ""}, {"3 -A", 2, "-A"}, {"3 -PX", 2, "-PX"}, {"3 -PKx", 2, "-PKx"},
    {"3 -p -PKx", 3, "-PKx", true}, {"3 /Tx", 2, "/Tx"}, {"3 -Rx file", 2, "-Rx"},
    {"3 -$x", 2, "-$x"}, {"3 -$12b", 2, "-$12b"}, {"3 -@257", 2, "-@257"}, {"3 -& 4", 2, "-&"},
    {"3 -&4 4", 2, "-&4"}, {"3 -&1", 3, missing}, {"3 -&1 257", 3, "257"}, {"3 -Y", 3, missing},
    {"3 -R", 3, missing}, {"3 -SE", 3, missing}, {"3 -SE 12b", 3, "12b"},
    {"3 -SEx 1", 2, "-SEx"}, {"3 -sEx", 2, "-sEx"}, {"3 -U", 2, "-U"}, {"3 -uY", 2, "-uY"},
    {"3 -UX", 2, "-UX"}, {"3 -UYx", 2, "-UYx"}, {"3 -M4", 2, "-M4"}, {"3 -MI", 2, "-MI"},
    {"3 -MI4", 2, "-MI4"}, {"3 -MI_1", 2, "-MI_1"}, {"3 -MI4294967297", 2, "-MI4294967297"},
    {"3 -MPx", 2, "-MPx"}, {"3 -MA1", 3, missing}, {"3 -MA1 yes", 3, "yes"},
    {"3 -MA1 ''", 3, ""}, {"3 -BI1", 2, "-BI1"}, {"3 -BA x", 3, "x"}, {"3 -Ht", 2, "-Ht"},
    {"3 -Ht35", 2, "-Ht35"}, {"3 -hT", 2, "-hT"}, {"3 -HT", 2, "-HT"},
    {"3 -HTabc", 2, "-HTabc"}, {"3 -HTnan", 2, "-HTnan"}, {"3 -HT1e999", 2, "-HT1e999"},
    {"3 -HO", 2, "-HO"}, {"3 -hMx", 2, "-hMx"}, {"3 -HS", 3, missing}, {"3 -VO", 2, "-VO"}, {"3 -VO0", 2, "-VO0"},
    {"3 -VO4", 2, "-VO4"}, {"3 -VO12", 2, "-VO12"}, {"3 -VV1", 3, missing},
    {"3 -VV1 x", 3, "x"}, {"3 -VG1y", 2, "-VG1y"}, {"3 -VG1yx", 2, "-VG1yx"},
    {"3 -VG1ynn", 2, "-VG1ynn"}, {"3 -vg1yn", 2, "-vg1yn"}, {"3 -XC", 2, "-XC"},
    {"3 -XC0", 2, "-XC0"}, {"3 -XC1024", 2, "-XC1024"}, {"3 -XIx", 2, "-XIx"},
    {"3 -xs3 file", 2, "-xs3"}, {"3 -xl3 file", 2, "-xl3"}, {"3 -XS", 3, missing},
    {"3 -XN5", 3, missing}, {"3 -xn5x", 2, "-xn5x"}, {"3 -XR1", 2, "-XR1"},
    // clang-format on
};

TEST(CommandLine, BadOnesTellWhere)
{
    for (const BadLine& line : bad_lines) {
        SCOPED_TRACE(line.arguments);
        Trial trial;
        trial.run(line.arguments);
        EXPECT_EQ(trial.exit_status, -1);
        EXPECT_THAT(
            trial.screen(),
            EndsWith("{M}Error parsing argument{.} {W}#" + std::to_string(line.position) + "{.}:" +
                     (*line.shown != '\0' ? std::string{" {W}"} + line.shown + "{.}\n" : "\n")));
        // The trace file of a library that was used is closed; the port stays as it is.
        EXPECT_EQ(trial.calls_of("CloseDebugFile()"), line.port_opened ? 1 : 0);
        EXPECT_EQ(trial.calls_of("Close()"), 0);
        EXPECT_EQ(trial.calls_of("Open(3)"), line.port_opened ? 1 : 0);
    }
}

TEST(CommandLine, GoodOnesInEveryNotation)
{
    // clang-format off
    for (const char* arguments :
         {"3 /t", "3x -T", "3 -$115200 -$ -$1C200h -T", "3 -@ -@100h -T", "3 -&* 256 -T",
          "3 -pK -T -nonsense", "3 -Se 5 -sE -T", "3 -Un -T", "3 -MI_ -mi11b -T", "3 -MA* Y -T",
          "3 -bz -BZ -bZ -T", "3 -HT35abc -T",
          "3 -HT-1 -ht -HK -hm -HS /dev/null -hs /dev/null -T",
          "3 -VG1Yn -Vg1 -vg_ -VV* -5.5 -T",
          "3 -XS f -XL -T -xl -T -XL3 f -XC1023 -XN3ffh -n -xN1 -xi -T"}) {
        // clang-format on
        SCOPED_TRACE(arguments);
        Trial trial;
        trial.pipe_in(""); // ends what goes on until Esc
        trial.run(arguments);
        EXPECT_EQ(trial.exit_status, 0);
        EXPECT_THAT(trial.screen(), Not(HasSubstr("Error parsing")));
    }
}

TEST(CommandLine, HelpComesAtTheEnd)
{
    Trial trial;
    trial.run("3 -? -pn -T");
    EXPECT_EQ(trial.exit_status, 0);
    EXPECT_THAT(trial.screen(), HasSubstr("Product number: {W}240101{.}\n"
                                          "KOV-Controller ver. 1-10, compilation date: "));
    EXPECT_THAT(trial.screen(), EndsWith("the respective radix\nProgram completed\n"));

    Trial bad;
    bad.run("3 -? -PKx");
    EXPECT_EQ(bad.exit_status, -1);
    EXPECT_THAT(bad.screen(), Not(HasSubstr("Error parsing")));
    EXPECT_THAT(bad.screen(), EndsWith("the respective radix\n"));

    Trial none;
    none.run("");
    EXPECT_EQ(none.exit_status, -1);
    EXPECT_THAT(none.calls, IsEmpty());
    for (const char* line :
         {"\nUsage: KOV-Controller COM-Number [Switches]\n", "slot number = 1..3):\n",
          "(a=address=0-3, base=_, all=*):\n", "(allowed value: 0..256, default=0)\n",
          "additional I/O debug into Debug.txt\n", "(default: 230400 baud)\n"})
        EXPECT_THAT(none.screen(), HasSubstr(line));
}

TEST(CommandLine, ControlCharactersCannotForgeTheErrorLine)
{
    Trial trial;
    trial.run("3 '-\033[2J\nProgram completed'");
    EXPECT_THAT(trial.screen(), EndsWith("{W}-\\e[2J\\nProgram completed{.}\n"));
}

TEST(CommandLine, TheProgramsName)
{
    EXPECT_EQ(program_name("C:\\tools\\KOV-Controller.exe"), "KOV-Controller.exe");
    EXPECT_EQ(program_name("/opt/v1.2/KOV-Controller"), "KOV-Controller");
    for (const char* unusable : {"", "tools/", static_cast<const char*>(nullptr)})
        EXPECT_EQ(program_name(unusable), "KOV-Controller");
}

TEST(CommandLine, NoRowStandsTwice)
{
    std::set<std::string> seen;
    for (const SwitchTable table : all_switch_tables()) {
        for (const Switch& row : table) {
            const std::string letters = row.letters;
            ASSERT_TRUE(letters.size() == 1 || letters.size() == 2) << letters;
            for (const Form form : {Form::capital, Form::lower}) {
                if (row.form == Form::either || row.form == form) {
                    const char* const kind = form == Form::capital ? "capital " : "lower ";
                    EXPECT_TRUE(seen.insert(kind + letters).second) << kind << letters;
                }
            }
        }
    }
    EXPECT_GT(seen.size(), 150u);
}

} // namespace
