#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/console.h"
#include "frame/device_call.h"
#include "frame/program.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

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
    EXPECT_THAT(unused.calls, ElementsAre("CloseDebugFile()"));
    EXPECT_EQ(unused.screen(), "Program completed\n");
}

TEST(Session, TellsEveryStepInDebugMode)
{
    Trial trial;
    trial.instrument("reply GetSWVersion.version 0102h");
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

    Trial never_opened;
    never_opened.run("3 -g -T");
    EXPECT_EQ(never_opened.screen(), "Closing the communication stream...\nProgram completed\n");
}

TEST(Session, RefusesWrongPortsAndOldLibraries)
{
    const struct {
        const char* arguments;
        const char* line;
        const char* screen;
    } cases[] = {
        {"0 -p", "", "{M}Wrong COM number specified: 0{.}, allowed range: 1..255\n"},
        {"256 -p", "", "{M}Wrong COM number specified: 256{.}, allowed range: 1..255\n"},
        {"65535 -p", "", "{M}Wrong COM number specified: -1{.}, allowed range: 1..255\n"},
        {"3 -p", "reply GetSWVersion.version 99",
         "{M}Wrong DLL Version{.}, expected {W}1-00{.} or later, found {W}0-99{.}\n"},
    };
    for (const auto& c : cases) {
        Trial trial;
        if (*c.line != '\0')
            trial.instrument(c.line);
        trial.run(c.arguments);
        EXPECT_EQ(trial.exit_status, 0);
        EXPECT_EQ(trial.screen(), std::string{c.screen} + "Program completed\n");
        EXPECT_THAT(trial.calls, Not(testing::Contains("Close()")));
    }
    Trial good;
    good.instrument("reply GetSWVersion.version 0100h");
    good.run("255 -pn -T");
    EXPECT_THAT(good.calls, testing::Contains("Open(255)"));
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
        Trial trial;
        trial.instrument("reply GetDevType.type 1234h");
        trial.type(10, c.key);
        trial.run("3 -pn -pn -T");
        const std::string number = "Product number: {W}240101{.}\n";
        EXPECT_EQ(trial.display(), question + c.answer + (c.goes_on ? number + number : ""));
        EXPECT_THAT(trial.calls, testing::Contains("Close()")); // the port had been opened
        EXPECT_EQ(trial.exit_status, 0);
    }
}

TEST(Session, ReportsFailuresOnTheWay)
{
    Trial trial;
    trial.instrument("fail GetDevType always text \"no answer\"");
    trial.run("3 -pn");
    EXPECT_THAT(trial.display(), HasSubstr(error_line("GetDevType", "09:26:53.589", "no answer") +
                                           "{M}last I/O error message: "));
    // The report asks for codes and texts, and nothing comes between the failure and the report.
    EXPECT_THAT(trial.calls, ElementsAre("GetSWVersion()", "Open(3)", "GetDevType()",
                                         "GetCommError()", "GetIOState()", "GetErrorMessage()",
                                         testing::StartsWith("GetIOStateMessage("),
                                         testing::StartsWith("GetCommErrorMessage("), "Close()",
                                         "CloseDebugFile()"));

    Trial closing;
    closing.instrument("fail Close always text \"cable lost\"");
    closing.run("3 -g -pn -T");
    EXPECT_THAT(
        closing.screen(),
        testing::EndsWith("{M}cable lost{.}\nCommunication stream closed\nProgram completed\n"));
}

TEST(ErrorReport, HostileTextsStayInTheirLine)
{
    Trial trial;
    trial.instrument("fail GetProductNo always");
    trial.instrument("reply GetErrorMessage.text \"a\\x1b[2J\\r\\nProgram completed\\x9b\"");
    trial.instrument("reply GetIOStateMessage.text null");
    trial.instrument("reply GetCommErrorMessage.text \"\"");
    trial.run("3 -pn -T");
    EXPECT_EQ(trial.display(),
              error_line("GetProductNo", "09:26:53.589", "a\\e[2J\\r\\nProgram completed\xC2\xA2") +
                  "{M}last I/O error message: , last communication port error:{.}\n");
    EXPECT_THAT(trial.output(), Not(HasSubstr("\033[2J")));
}

TEST(Interrupt, EndsInOrder)
{
    Trial display;
    display.instrument("latency 10");
    virtual_platform.signals = {{205, SIGTERM}};
    display.run("3 -PL -pn");
    EXPECT_EQ(display.exit_status, 128 + SIGTERM);
    EXPECT_THAT(display.calls, Not(testing::Contains("GetProductNo()")));
    EXPECT_THAT(display.display(), testing::EndsWith("Color: {B}LED{.}\n"));
    Trial question; // a question is unanswered then
    question.instrument("reply GetDevType.type 1234h");
    virtual_platform.signals = {{500, SIGINT}};
    question.run("3 -pn");
    EXPECT_THAT(question.display(), testing::EndsWith("{Y}interrupted{.}\n"));
    EXPECT_EQ(question.exit_status, 130);

    Trial closed_pipe;
    virtual_platform.output_is_terminal = false;
    virtual_platform.output_is_closed = true;
    closed_pipe.instrument("latency 10");
    closed_pipe.run("3 -pn -PK");
    EXPECT_EQ(closed_pipe.exit_status, 128 + SIGPIPE);
    EXPECT_THAT(closed_pipe.calls, testing::Contains("Close()"));
}

TEST(DeviceCall, ClearsItsResultsBeforeEachTry)
{
    Trial trial;
    trial.instrument("fail GetModulePresence at 1");
    console.start();
    std::uint8_t valid = 7;
    std::uint32_t count = 7;
    std::array<std::uint8_t, 8> flags;
    flags.fill(7);
    EXPECT_EQ(attempt(LIB(Open), std::uint8_t{3}), nullptr);
    EXPECT_STREQ(attempt(LIB(GetModulePresence), &valid, &count, &flags),
                 "COM_KOV_CTRL_GetModulePresence");
    EXPECT_EQ(flags[7], 0);
    EXPECT_EQ(valid, 0);
    trial.instrument("fail GetUptimeInt at 1");
    trial.calls.clear();
    std::uint32_t seconds = 0;
    std::uint16_t milliseconds = 0;
    EXPECT_TRUE(call_twice(LIB(GetUptimeInt), &seconds, &milliseconds, &seconds, &milliseconds));
    EXPECT_EQ(trial.calls.size(), 2u) << "one repeat, and the first failure is nobody's business";
    EXPECT_EQ(trial.screen(), "");
    trial.instrument("fail Purge always");
    EXPECT_FALSE(call_twice(LIB(Purge)));
    EXPECT_THAT(trial.screen(), HasSubstr("Error at COM_KOV_CTRL_Purge: "));
    EXPECT_EQ(attempt(LIB(Close)), nullptr);
}

TEST(DeviceCall, TerminatesTextsThatFillTheirField)
{
    Trial trial;
    trial.instrument("reply GetFwDate.date fill \"x\"");
    trial.run("3 -pd -T");
    EXPECT_EQ(trial.display().size(), std::string_view{"Firmware date: {W}{.}\n"}.size() + 12);
}

} // namespace
