#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "tests/config/config_trial.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <set>
#include <string>

namespace
{

using testing::ElementsAre;

TEST(Session, OpensOnceAndClosesAtTheEnd)
{
    Trial trial;
    trial.run("3 -pn -pn -T");
    EXPECT_EQ(trial.exit_status, 0);
    EXPECT_THAT(trial.calls,
                ElementsAre("GetSWVersion()", "Open(3)", "GetDevType()", "GetProductNo()",
                            "GetProductNo()", "Close()", "CloseDebugFile()"));
    Trial unused;
    unused.run("3 -T");
    EXPECT_TRUE(unused.calls.empty()); // no library is loaded
    EXPECT_EQ(unused.screen(), "Program completed\n");
}

TEST(Session, TellsEveryStepInDebugMode)
{
    Trial trial{"reply GetSWVersion.version 0102h"};
    trial.run("3 -Q -G -z -T");
    // Who asks for every detail gets it: debug mode wins over quiet mode.
    EXPECT_EQ(trial.screen(), "Checking DLL Version...\n"
                              "DLL Version: 1-02\n"
                              "Opening COM3 for the communication stream...\n"
                              "{W}COM3{.} opened for the communication stream\n"
                              "Checking device type...\n"
                              "Getting buffer status of the device...\n"
                              "Device buffer is {W}empty{.}\n"
                              "Closing the communication stream...\n"
                              "Communication stream closed\n"
                              "Program completed\n");
    EXPECT_EQ(trial.calls.front(), "OpenDebugFile(\"Debug.txt\")");
    Trial quiet_again;
    quiet_again.run("3 -g -z -Q -z -T");
    EXPECT_THAT(quiet_again.screen(), Not(HasSubstr("Program completed")));
    EXPECT_EQ(display_of("-g"), "Closing the communication stream...\n"); // never opened
    EXPECT_THAT(display_of("-g -pn", {"fail Close always text \"cable lost\""}),
                EndsWith("{M}cable lost{.}\nCommunication stream closed\n"));
}

TEST(Session, RefusesWrongPortsAndOldLibraries)
{
    const std::string allowed = "{.}, allowed range: 1..255\n";
    const struct {
        const char* arguments;
        const char* version;
        std::string display;
        std::ptrdiff_t opened = 0;
    } cases[] = {
        {"0 -p", "0100h", "{M}Wrong COM number specified: 0" + allowed},
        {"256 -p", "0100h", "{M}Wrong COM number specified: 256" + allowed},
        {"65535 -p", "0100h", "{M}Wrong COM number specified: -1" + allowed},
        {"3 -p", "99", "{M}Wrong DLL Version{.}, expected {W}1-00{.} or later, found {W}0-99{.}\n"},
        {"255 -q -pn -T", "0100h", "Product number: {W}240101{.}\n", 1},
        {"255h -q -pn -T", "0100h", "Product number: {W}240101{.}\n", 1},
        {"65791 -q -pn -T", "0100h", "Product number: {W}240101{.}\n", 1}, // the low 16 bits
    };
    for (const auto& c : cases) {
        Trial trial{std::string{"reply GetSWVersion.version "} + c.version};
        trial.run(c.arguments);
        EXPECT_EQ(trial.exit_status, 0);
        EXPECT_EQ(trial.display(), c.display);
        EXPECT_EQ(trial.calls_of("Open(255)"), c.opened);
        EXPECT_EQ(trial.calls_of("Close()"), c.opened);
    }
}

TEST(Session, ALibraryThatLacksFunctions)
{
    const auto named = [](const std::string& name) {
        return "{M}Functions missing in the device library{.}: {W}COM_KOV_CTRL_" + name + "{.}\n";
    };
    const auto refused = [&](const std::string& name) {
        return named(name) + "{M}The port is not opened{.}, without {W}COM_KOV_CTRL_" + name +
               "{.} the instrument could not be left in order\n";
    };
    const std::string no_state =
        "{M}2026/03/14, 09:26:53.589: Error at COM_KOV_CTRL_GetBufferState: the device library "
        "has no such function{.}\n{M}last I/O error message: no error, last communication port "
        "error: no error{.}\n";
    const struct {
        const char* missing;
        const char* arguments;
        std::string display;
        std::ptrdiff_t opened = 0;
    } cases[] = {
        {"SetCurrentConfig", "3 -q -u -T", refused("SetCurrentConfig")},
        {"Close", "3 -q -u -T", refused("Close")},
        {"GetIOStateMessage", "3 -q -u -T", refused("GetIOStateMessage")},
        {"GetSWVersion", "3 -q -u -T", refused("GetSWVersion")},
        {"GetBufferState", "3 -q -z -u -T",
         named("GetBufferState") + no_state + "Device is {Y}disabled{.}\n", 1},
        {"OpenDebugFile", "3 -q -G -u -T", // debug mode wins over quiet mode
         "Checking DLL Version...\nDLL Version: 1-05\n" + named("OpenDebugFile") +
             "Opening COM3 for the communication stream...\n{W}COM3{.} opened for the "
             "communication stream\nChecking device type...\nGetting enable state of the device:\n"
             "Device is {Y}disabled{.}\nClosing the communication stream...\nCommunication stream "
             "closed\nProgram completed\n",
         1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.missing);
        Trial trial;
        virtual_platform.missing_functions = {std::string{"COM_KOV_CTRL_"} + c.missing};
        trial.run(c.arguments);
        EXPECT_THAT(trial.screen(), StartsWith(c.display));
        EXPECT_EQ(trial.calls_of("Open(3)"), c.opened);
        EXPECT_EQ(trial.calls_of("Close()"), c.opened);
    }
    Trial old{"reply GetSWVersion.version 99"};
    virtual_platform.missing_functions = {"COM_KOV_CTRL_Close", "COM_KOV_CTRL_SetEnable"};
    old.run("3 -u");
    EXPECT_THAT(old.display(), StartsWith("{M}Wrong DLL Version{.}")); // says it all
    EXPECT_EQ(old.calls_of("Open(3)"), 0);
}

/// Runs in which one function of the library comes after the other.
struct LongRun {
    const char* switches;
    const char* keys = ""; ///< half a second after the start; without any, "yy" is piped in
};

void start(Trial& trial, const LongRun& run, const std::string& next)
{
    make_set(trial, 1, "one", true);
    trial.instrument("latency 1");
    trial.instrument("reply GetHVsupplyParamsPWM.dataReady 50h");
    if (*run.keys != '\0')
        trial.type(500, run.keys);
    else
        trial.pipe_in("yy");
    trial.run("3 -q " + std::string{run.switches} + next + " -T");
}

TEST(Session, NoRunBeginsThatLacksAFunctionOnItsWay)
{
    const TemporaryFolder folder; // the tuning display names its file itself
    Trial files;
    start(files, {"-XS sets -y memory"}, "");
    const std::string sets = contents("sets");
    for (const LongRun& run :
         {LongRun{"-Y memory"}, LongRun{"-XL sets"}, LongRun{"-XL1 sets"}, LongRun{"-XW"},
          LongRun{"-XW1"}, LongRun{"-XS sets"}, LongRun{"-VT1", "PA\033[AaSs\033"}}) {
        SCOPED_TRACE(run.switches);
        Trial whole;
        start(whole, run, "");
        std::set<std::string> called;
        for (const std::string& call : whole.calls)
            called.insert(call.substr(0, call.find('(')));
        for (const char* of_session :
             {"GetSWVersion", "Open", "GetDevType", "Close", "CloseDebugFile"})
            called.erase(of_session);
        EXPECT_GE(called.size(), 2U);
        for (const std::string& missing : called) {
            SCOPED_TRACE(missing);
            Trial refused;
            virtual_platform.missing_functions = {"COM_KOV_CTRL_" + missing};
            start(refused, run, " -u");
            EXPECT_THAT(refused.screen(), HasSubstr(": Error at COM_KOV_CTRL_" + missing +
                                                    ": the device library has no such function"));
            EXPECT_THAT(refused.screen(), Not(HasSubstr("[y/n]"))); // asks nothing in vain
            EXPECT_THAT(refused.screen(), EndsWith("Device is {Y}disabled{.}\n"));
            EXPECT_EQ(refused.calls_of("Set") + refused.calls_of("Update"), 0);
            EXPECT_EQ(contents("sets"), sets);
        }
    }
}

TEST(Session, AsksAboutAnotherDevice)
{
    const std::string question =
        "{M}Wrong device type{.}, expected {W}8ED6h{.}, found {W}1234h{.}, "
        "proceed anyway (Y/N)?\n";
    const struct {
        const char* key;
        const char* answer;
        bool goes_on;
    } cases[] = {{"y", "Y\n", true}, {"n", "N\n", false}, {"\033", "{Y}interrupted{.}\n", false}};
    for (const auto& c : cases) {
        Trial trial{"reply GetDevType.type 1234h"};
        trial.type(10, c.key);
        trial.run("3 -pn -pn -T");
        const std::string number = "Product number: {W}240101{.}\n";
        EXPECT_EQ(trial.display(), question + c.answer + (c.goes_on ? number + number : ""));
        EXPECT_EQ(trial.calls_of("Close()"), 1); // the port had been opened
        EXPECT_EQ(trial.exit_status, 0);
    }
    for (const char* command :
         {"-pn", "-y data", "-@5", "-R data"}) { // Ctrl-C is no wrong argument
        Trial trial{"reply GetDevType.type 1234h"};
        virtual_platform.signals = {{.at_ms = 500, .number = 2}};
        trial.run(std::string{"3 "} + command);
        EXPECT_EQ(trial.display(), question + "{Y}interrupted{.}\n") << command;
        EXPECT_EQ(trial.calls_of("Close()"), 1);
        EXPECT_EQ(trial.exit_status, 130);
    }
}

TEST(ErrorReport, AsksForCodesAndTextsDirectlyBehindTheFailure)
{
    Trial trial{"fail GetDevType always text \"no answer\""};
    trial.run("3 -pn");
    EXPECT_THAT(trial.display(), HasSubstr(error_line("GetDevType", "09:26:53.589", "no answer") +
                                           "{M}last I/O error message: "));
    EXPECT_THAT(trial.calls,
                ElementsAre("GetSWVersion()", "Open(3)", "GetDevType()", "GetCommError()",
                            "GetIOState()", "GetErrorMessage()", StartsWith("GetIOStateMessage("),
                            StartsWith("GetCommErrorMessage("), "Close()", "CloseDebugFile()"));
}

TEST(ErrorReport, HostileTextsStayInTheirLine)
{
    Trial trial{"fail GetProductNo always",
                "reply GetErrorMessage.text \"a\\x1b[2J\\r\\nProgram completed\\x9b\"",
                "reply GetIOStateMessage.text null", "reply GetCommErrorMessage.text \"\""};
    trial.run("3 -pn -T");
    EXPECT_EQ(trial.display(),
              error_line("GetProductNo", "09:26:53.589", "a\\e[2J\\r\\nProgram completed\xC2\xA2") +
                  "{M}last I/O error message: , last communication port error:{.}\n");
    EXPECT_THAT(trial.output(), Not(HasSubstr("\033[2J")));
}

TEST(DeviceCall, ClearsItsResultsBeforeEachTry)
{
    const Trial trial{"fail GetModulePresence always"};
    std::uint8_t valid = 7;
    std::uint32_t count = 7;
    std::array<std::uint8_t, 8> flags;
    flags.fill(7);
    EXPECT_FALSE(attempt(LIB(Open), std::uint8_t{3}));
    EXPECT_STREQ(attempt(LIB(GetModulePresence), &valid, &count, &flags).function(),
                 "COM_KOV_CTRL_GetModulePresence");
    EXPECT_EQ(flags[7] + valid, 0);
    EXPECT_FALSE(attempt(LIB(Close)));
}

TEST(DeviceCall, TerminatesTextsThatFillTheirField)
{
    EXPECT_EQ(display_of("-pd", {"reply GetFwDate.date fill \"x\""}),
              "Firmware date: {W}" + std::string(12, 'x') + "{.}\n");
}

} // namespace
