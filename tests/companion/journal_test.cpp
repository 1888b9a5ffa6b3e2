// Journals of library calls: what is written into them, who reads them, and what is refused.
#include "devlib/COM-KOV-CTRL.h"
#include "tests/companion/companion_trial.h"
#include "tests/companion/journal_trial.h"
#include "tests/support/trial.h"

#include <array>
#include <cmath>
#include <limits>

namespace
{

template <class Function>
Function entry(const char* name, Function)
{
    return reinterpret_cast<Function>(journal_entries[devlib::find_function(name)]);
}

#define ENTRY(function) entry(#function, &COM_KOV_CTRL_##function)

std::string with(std::string text, std::string_view old, std::string_view now)
{
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return at == std::string::npos ? text : text.replace(at, old.size(), now);
}

/// The journal of a run of the program.
std::string journal_of(const std::string& switches, ScenarioLines lines = {})
{
    Trial trial{lines};
    virtual_platform.library = &journal_entries;
    TappedCalls tapped;
    trial.run("3 " + switches);
    return tapped.journal();
}

TEST(Journal, HasALineForEachCallAndOneForIdenticalPolls)
{
    Trial trial{"latency 1", "reply GetState.state 5", "fail GetEnable at 2 text \"no answer\""};
    TappedCalls tapped;
    std::uint16_t state = 0;
    std::uint8_t enabled = 0;
    EXPECT_EQ(ENTRY(Open)(3), 0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ENTRY(GetState)(&state), 0);
    EXPECT_EQ(ENTRY(GetEnable)(&enabled), 0);
    EXPECT_NE(ENTRY(GetEnable)(&enabled), 0);
    EXPECT_EQ(ENTRY(SetEnable)(1), 0);
    EXPECT_EQ(ENTRY(SetEnable)(1), 0); // a setting is no poll
    EXPECT_EQ(ENTRY(GetSWVersion)(), 0x0105);
    EXPECT_STREQ(ENTRY(GetIOStateMessage)(0), "no error");
    const std::string journal = tapped.journal();
    const std::size_t end = journal.find('\n') + 1;
    EXPECT_THAT(journal.substr(0, end),
                StartsWith(R"({"kov_journal":1,"program":"KOV-Controller","arguments":["3"],)"
                           R"("library":"linked","library_version":0,"system":)"));
    EXPECT_EQ(
        journal.substr(end),
        R"({"n":1,"time":"2026-03-14T09:26:53.589000+00:00","us":0,"call":"Open","in":{"port":3},"status":0,"out":{}}
{"n":2,"time":"2026-03-14T09:26:53.589000+00:00","us":3000,"count":3,"last":"2026-03-14T09:26:53.591000+00:00","max_us":1000,"call":"GetState","in":{},"status":0,"out":{"state":5}}
{"n":5,"time":"2026-03-14T09:26:53.592000+00:00","us":1000,"call":"GetEnable","in":{},"status":0,"out":{"enable":0}}
{"n":6,"time":"2026-03-14T09:26:53.593000+00:00","us":1000,"call":"GetEnable","in":{},"status":-7,"error":"no answer"}
{"n":7,"time":"2026-03-14T09:26:53.594000+00:00","us":1000,"call":"SetEnable","in":{"enable":1},"status":0,"out":{}}
{"n":8,"time":"2026-03-14T09:26:53.595000+00:00","us":1000,"call":"SetEnable","in":{"enable":1},"status":0,"out":{}}
{"n":9,"time":"2026-03-14T09:26:53.596000+00:00","us":0,"call":"GetSWVersion","in":{},"version":261}
{"n":10,"time":"2026-03-14T09:26:53.596000+00:00","us":0,"call":"GetIOStateMessage","in":{"state":0},"text":"no error"}
{"end":"2026-03-14T09:26:53.596000+00:00","calls":10,"failures":1,"us":7000}
)");
}

TEST(Journal, IdenticalPollsShareALineForASecond)
{
    Trial trial{"latency 400"};
    TappedCalls tapped;
    std::uint16_t state = 0;
    EXPECT_EQ(ENTRY(Open)(3), 0);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(ENTRY(GetState)(&state), 0);
    const std::string journal = tapped.journal();
    EXPECT_THAT(journal, HasSubstr(R"("us":1200000,"count":3,)"));
    EXPECT_THAT(journal, HasSubstr(R"("us":800000,"count":2,)"));
    const TemporaryFile file;
    write_file(file.name(), journal);
    EXPECT_THAT(run_kov({"journal", "stats", file.name()}).out,
                HasSubstr("  400.000  400.000  400.000  400.000        0\n"));
}

TEST(Journal, TellsPollsAtLeastEverySecondAlsoWhenTheClockIsSetBack)
{
    static std::int64_t seconds = 0;
    const journal::Clock clock = {.now =
                                      [] {
                                          return journal::Moment{-seconds * 1'000'000, 0};
                                      },
                                  .steady_us = [] { return seconds * 1'000'000; },
                                  .rest_us = nullptr};
    std::int64_t lines = 0;
    journal::Recorder recorder{clock, [&](std::string_view) { return ++lines > 0; }};
    const auto function = [] {};
    for (seconds = 0; seconds < 10; ++seconds)
        (void)recorder.pass_on({devlib::find_function("GetErrorMessage"),
                                {},
                                [](auto, auto) { return journal::Returned{}; },
                                nullptr},
                               function, nullptr);
    EXPECT_EQ(lines, 9); // the last one still goes on
}

TEST(Journal, KeepsWhatAProgramDoesWrong)
{
    Trial trial{"fail OpenDebugFile always"};
    TappedCalls tapped;
    EXPECT_EQ(ENTRY(Open)(3), 0);
    constexpr std::array<std::uint8_t, 64> few_bytes{}; // the library shows the first ones
    EXPECT_NE(ENTRY(SetMemoryData)(0, UINT32_MAX, few_bytes.data()), 0);
    EXPECT_NE(ENTRY(OpenDebugFile)("no/such/folder/trace"), 0);
    EXPECT_NE(ENTRY(GetModuleState)(99, nullptr), 0);
    const std::string journal = tapped.journal();
    EXPECT_THAT(journal,
                HasSubstr(R"("in":{"start":0,"count":4294967295,"data":null},"status":-)"));
    EXPECT_THAT(journal.substr(journal.find("GetModuleState")), HasSubstr("\"error\":\""));
    const TemporaryFile file;
    write_file(file.name(), journal);
    EXPECT_EQ(run_kov({"journal", "show", file.name()}).err, "");
}

TEST(Journal, GivesBackEveryValueAsItWas)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double not_a_number = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::pair<double, std::string>> reals = {
        {0.1, "0.1"},
        {-0.0, "-0.0"},
        {infinity, "\"inf\""},
        {-infinity, "\"-inf\""},
        {not_a_number, "\"nan\""},
        {-not_a_number, "\"-nan\""},
        {5e-324, "5e-324"},
        {1.7976931348623157e308, "1.7976931348623157e+308"},
        {24, "24"}};
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"", "\"\""},
        {"a\"b\\c\n\x7f", R"("a\"b\\c\u000a\u007f")"},
        {"20 \xC2\xB0"
         "C",
         "\"20 \xC2\xB0"
         "C\""},
        {"20 \xB0"
         "C",
         R"({"latin1":"20 \u00b0C"})"},
        {"\xED\xA0\x80", R"({"latin1":"\u00ed\u00a0\u0080"})"},
        {std::string(202, '\xFF'), "{\"latin1\":\"\\u00ff"}};
    std::string journal;
    Trial trial;
    {
        TappedCalls tapped;
        EXPECT_EQ(ENTRY(Open)(3), 0);
        for (const auto& [real, written] : reals)
            (void)ENTRY(SetHeatCtrlVoltageLimit)(&real);
        for (const auto& [text, written] : texts)
            (void)ENTRY(SetConfigName)(4, (text + std::string(203, '\0')).c_str());
        journal = tapped.journal();
    }
    for (const auto& [real, written] : reals)
        EXPECT_THAT(journal, HasSubstr("{\"voltage\":" + written + '}'));
    for (const auto& [text, written] : texts)
        EXPECT_THAT(journal, HasSubstr("\"name\":" + written));
    // The same values as results.
    std::string results = journal.substr(0, journal.find('\n') + 1);
    std::size_t number = 0;
    const auto add = [&](const std::string& call) {
        results += "{\"n\":" + std::to_string(++number) + ",\"us\":0," + call + "}\n";
    };
    for (const auto& [real, written] : reals)
        add(R"("call":"GetHeatCtrlVoltageLimit","in":{},"status":0,"out":{"voltage":)" + written +
            '}');
    std::string long_text = journal.substr(journal.rfind("{\"latin1\""));
    long_text.resize(long_text.find('}') + 1);
    for (const auto& [text, written] : texts)
        add(R"("call":"GetConfigName","in":{"index":4},"status":0,"out":{"name":)" +
            (text.size() > 200 ? long_text : written) + '}');
    ReplayedCalls replayed{results};
    for (const auto& [real, written] : reals) {
        double value = 1;
        EXPECT_EQ(ENTRY(GetHeatCtrlVoltageLimit)(&value), 0);
        EXPECT_TRUE(std::isnan(real) ? std::isnan(value) : value == real) << written;
        EXPECT_EQ(std::signbit(value), std::signbit(real)) << written;
    }
    for (const auto& [text, written] : texts) {
        std::string name(203, '\0');
        EXPECT_EQ(ENTRY(GetConfigName)(4, name.data()), 0);
        EXPECT_STREQ(name.c_str(), text.c_str());
    }
    EXPECT_EQ(replayed.difference(), "");
}

/// What somebody did to a journal of "-u -SE 5 -T", and what is said of it when it is replayed.
TEST(Journal, ThatWasChangedIsRefusedOrDivergesAtThatCall)
{
    const std::string journal = journal_of("-u -SE 5 -T");
    const std::size_t fourth = journal.find("{\"n\":4");
    const std::size_t fifth = journal.find("{\"n\":5");
    const struct {
        std::string journal, difference;
    } cases[] = {
        {journal, ""},
        {with(journal, "\"mask\":5", "\"mask\":6"),
         "call 5 differs from the journal: expected SetHVsupplyInterlockEnable(mask=6), actual "
         "SetHVsupplyInterlockEnable(mask=5)"},
        {with(journal, "GetEnable", "GetDataReadyFlags"),
         "call 4 differs from the journal: expected nothing, the journal is not sound: line 5: the "
         "results are none of GetDataReadyFlags, actual GetEnable()"},
        {journal.substr(0, fourth) + journal.substr(fifth),
         "call 4 differs from the journal: expected nothing, the journal is not sound: line 5: "
         "call "
         "4 is missing, actual GetEnable()"},
        {journal.substr(0, fifth), "call 5 differs from the journal: expected nothing, the journal "
                                   "breaks off here, actual SetHVsupplyInterlockEnable(mask=5)"},
        {journal.substr(0, fifth + 60),
         "call 5 differs from the journal: expected nothing, the journal is torn off here, actual "
         "SetHVsupplyInterlockEnable(mask=5)"},
        {with(journal, "\"kov_journal\":1", "\"kov_journal\":2"),
         "call 1 differs from the journal: expected nothing, the journal is not sound: line 1: its "
         "schema has version 2, this program knows 1, actual GetSWVersion()"},
        {journal_of("-u -SE 5 -pn -T"), "call 6 differs from the journal: expected GetProductNo(), "
                                        "actual Close()"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.difference);
        Trial trial;
        virtual_platform.library = &journal_entries;
        ReplayedCalls replayed{c.journal};
        trial.run("3 -u -SE 5 -T");
        EXPECT_EQ(replayed.difference(), c.difference);
    }
    // A long text differs at its end.
    const std::string name(150, 'x');
    std::string long_name;
    const auto set_name = [](const std::string& text) {
        (void)ENTRY(SetConfigName)(4, (text + std::string(203, '\0')).c_str());
    };
    {
        Trial trial;
        TappedCalls tapped;
        set_name(name + '1');
        long_name = tapped.journal();
    }
    {
        Trial trial;
        ReplayedCalls replayed{long_name};
        set_name(name + '2');
        EXPECT_THAT(replayed.difference(),
                    testing::AllOf(HasSubstr("x1\"), actual"), EndsWith("x2\")")));
    }
    // The companion looks before anything is run.
    const TemporaryFile file;
    for (const auto& [text, message] : std::vector<std::pair<std::string, std::string>>{
             {cases[3].journal, ", line 5: call 4 is missing"},
             {cases[6].journal, ", line 1: its schema has version 2, this program knows 1"},
             {"", ", line 1: it is no journal of library calls"},
             {"Test protocol\n", ", line 1: it is no JSON object"},
             {std::string(5'000'000, ' '), ", line 1: it is too long"},
             {journal + "{\"n", ", line 10: it is no JSON object"},
             {journal.substr(0, fifth) + journal.substr(fourth),
              ", line 6: call 4 stands there twice"},
             {with(journal, "\"us\":0", "\"us\":9223372036854775807"),
              ", line 2: its numbers are none"},
             {journal.substr(0, journal.find('\n') + 1) +
                  R"({"n":1,"call":"GetMemoryData","in":{"start":0,"count":3},)"
                  R"("status":0,"out":{"data":"FFFF"}})"
                  "\n",
              ", line 2: the results are none of GetMemoryData"},
             {with(journal, "\"failures\":0", "\"failures\":1"),
              ", line 9: the end tells 7 calls and 1 failures, but there are 7 and 0"}}) {
        write_file(file.name(), text);
        const KovRun ran = run_kov({"journal", "show", file.name()});
        EXPECT_EQ(ran.status, 3);
        EXPECT_EQ(ran.err, "kov: " + file.name() + message + '\n');
    }
}

TEST(Journal, IsShownAndCounted)
{
    const TemporaryFile file;
    write_file(file.name(),
               journal_of("-q -u -T",
                          {"latency 1", "fail GetEnable always text \"no \\x1b\\xb0 answer\""}));
    const KovRun shown = run_kov({"journal", "show", file.name()}, {.colored = true});
    EXPECT_THAT(
        shown.out,
        HasSubstr("       3  09:26:53.589     1.000          "
                  "\33[1mGetDevType()\33[m  type=36566\n"
                  "       4  09:26:53.590     1.000          "
                  "\33[1mGetEnable()\33[m\33[1;35m  failed (-7): no ?\xC2\xB0 answer\33[m\n"));
    EXPECT_THAT(shown.out, EndsWith("the end: 11 calls, 1 failures\n"));
    const KovRun failures = run_kov({"journal", "show", "--failures", file.name()});
    EXPECT_THAT(failures.out, Not(HasSubstr("GetDevType")));
    EXPECT_THAT(failures.out, HasSubstr("GetEnable()  failed (-7): no ?\xC2\xB0 answer\n"));
    const KovRun counted = run_kov({"journal", "stats", file.name()});
    EXPECT_THAT(counted.out,
                StartsWith("function              calls    per s  50 % ms  90 % ms  99 % ms"
                           "   max ms failures\n"));
    EXPECT_THAT(counted.out,
                HasSubstr("\nGetEnable                 1    333.3    1.000    1.000    1.000"
                          "    1.000        1\n"));
    EXPECT_THAT(counted.out,
                HasSubstr("\nall                      11   3666.7    0.000    1.000    1.000"
                          "    1.000        1\n"));
    EXPECT_THAT(counted.out,
                EndsWith("GetEnable failed 1 times: status -7: no ?\xC2\xB0 answer\n"));
}

} // namespace
