#include "tests/support/trial.h"

#include <algorithm>
#include <set>

namespace
{

const std::string header_0 = "data sets of up to {W}0{.} bytes ({W}2{.} bytes total), press "
                             "{W}Esc{.} to quit: ";
const std::string started = "\n  Test started on  {W}2026/03/14, 09:26:53.589{.}";

TEST(ControllerTest, CountsDisplaysAndLooksAtKeysThere)
{
    Trial trial{"block Test for 10"};
    trial.type(1300, "\033"); // behind the first display, which comes at 1.23 s
    trial.run("3 -q -@ -T");
    EXPECT_EQ(trial.display(),
              "Testing communication with " + header_0 + "01Bh" + started +
                  ", stopped by user\n"
                  "  Test finished on {W}2026/03/14, 09:26:56.039{.} after {W}247{.} cycles, "
                  "{W}490{.} ({W}4.90E+02{.}) bytes\n"
                  "    data rate: {W}0.195{.} KB/s, {W}100.82{.} cycles/s, mean response time: "
                  "{W}9.92{.} ms\n");
    EXPECT_EQ(trial.calls_of("Test(\"\")"), 245);
}

TEST(ControllerTest, TheSummaryStandsBelowTheError)
{
    Trial trial{"block Test for 10", "fail Test at 400 text \"gone\""};
    trial.type(3000, "x"); // shown by the third display, the last before the failure
    trial.run("3 -@0 -T");
    EXPECT_THAT(trial.display(),
                StartsWith("Testing communication with " + header_0 + "'X'" + started +
                           ", run {W}#370{.} (  {W}2{.} bytes, {W}0.195{.} KB/s)\n" +
                           error_line("Test", "09:26:57.589", "gone")));
    EXPECT_THAT(trial.display(), HasSubstr("{.} after {W}403{.} cycles, {W}800{.} ("));
    const std::string at_once = display_of("-@0", {"fail Test always"});
    EXPECT_THAT(at_once, HasSubstr(started + ", run\n{M}2026"));
    EXPECT_THAT(at_once, EndsWith("time-out{.}\n\n"));
}

TEST(ControllerTest, SendsPrintableTextsUpToTheLength)
{
    Trial trial{"fail Test at 2000"};
    trial.run("3 -@1 -T");
    const std::set<std::string> sent(trial.calls.begin(), trial.calls.end());
    const auto texts = std::count_if(sent.begin(), sent.end(), [](const std::string& call) {
        return call.starts_with("Test(");
    });
    EXPECT_EQ(texts, 1 + 96) << "the empty one, and each character alone";
    EXPECT_TRUE(sent.contains("Test(\" \")"));
    EXPECT_TRUE(sent.contains("Test(\"\\x7F\")"));
}

TEST(ControllerTest, ARequestToEndIsNotKeptWaiting)
{
    Trial trial{"block Test for 1000"};
    virtual_platform.signals = {{.at_ms = 2500, .number = 15}};
    trial.run("3 -@0 -T");
    EXPECT_THAT(trial.display(), HasSubstr(started + ", stopped by user\n  Test finished on "
                                                     "{W}2026/03/14, 09:26:56.589{.} after {W}3"));
}

TEST(ModuleTest, Partners)
{
    const std::string stopped = header_0 + "01Bh" + started + ", stopped by user\n";
    const struct {
        const char* switches;
        const char* flags; ///< of the slots
        std::string start; ///< of the display
        const char* call;  ///< null = none
    } cases[] = {
        {"-&2 0", "0010", "Testing communication with the module {W}2{.} with " + stopped,
         "TestModule(\"\", 2)"},
        {"-&_ 0", "0000", "Testing communication with  with " + stopped, "TestModule(\"\", 128)"},
        {"-&* 0", "0100",
         "{W}1{.} NOL module(s) present\nTesting communication with {W}all{.} modules with " +
             stopped,
         "TestModule(\"\", 1)"},
        {"-q -&* 0", "0001",
         "present\nTesting communication with {W}all{.} modules with " + stopped,
         "TestModule(\"\", 3)"},
        {"-&2 0", "1101", "{M}Module #2 not found!{.}\n", nullptr},
        {"-&* 0", "2030", "{M}No modules found!{.}\n", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.switches);
        Trial trial;
        for (std::size_t i = 0; i < 4; ++i)
            trial.instrument("reply GetModulePresence.flags[" + std::to_string(i) + "] " +
                             c.flags[i]);
        trial.pipe_in("x\033"); // a key in each cycle: every one is displayed
        trial.run(std::string{"3 "} + c.switches + " -T");
        EXPECT_THAT(trial.display(), StartsWith(c.start));
        if (c.call == nullptr)
            continue;
        EXPECT_THAT(trial.display(), HasSubstr("after {W}2{.} cycles, {W}4{.} ("));
        EXPECT_EQ(trial.calls_of(c.call), 2);
    }
}

TEST(ModuleTest, FailuresAndASingleCycle)
{
    const struct {
        const char* line; ///< of the scenario
        std::string part; ///< of the display
    } cases[] = {
        // The presence is not read again.
        {"fail GetModulePresence at 1", "Getting module-presence flags:\n{M}2026"},
        {"reply GetModulePresence.valid 0", "{M}Module-presence flags invalid!{.}\n"},
        // The counter tells which transfer failed, the rate is that of the one before.
        {"fail TestModule at 1",
         ", run {W}#1{.} (mod.{W}03{.},   {W}2{.} bytes\n{M}2026/03/14, 09:26:53.689: "},
        {"fail TestModule at 3",
         ", run {W}#3{.} (mod.{W}03{.},   {W}2{.} bytes, {W}0.020{.} KB/s)\n{M}2026"},
        {"noise off", "with " + header_0 + "01Bh" + started + "\nClosing"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Trial trial{"reply GetModulePresence.flags[0] 0", "reply GetModulePresence.flags[1] 0",
                    "reply GetModulePresence.flags[2] 0", "block TestModule for 100", c.line};
        const bool fails = c.part.find('#') != std::string::npos;
        trial.pipe_in(fails ? "xxx" : "");
        trial.run("3 -g -&* 0 -T");
        EXPECT_THAT(trial.display(), HasSubstr(c.part));
    }
}

} // namespace
