#include "companion/report/limits.h"
#include "companion/report/units.h"
#include "tests/companion/companion_trial.h"
#include "tests/support/trial.h"

#include <algorithm>
#include <cmath>

using companion::Outcome;

namespace
{

TEST(Limits, TellsWhatIsWrong)
{
    const struct {
        const char* text;
        const char* problem;
    } cases[] = {
        {"# comment\n\na/b 24 V +-2 % # comment\nb ..5 s\nc 5.. Ohm\nd +-1 mV +-1 % of range\n",
         ""},
        {"a/b is OK \"very good\"\r\nexpect base KOVCT-BASE\n", ""},
        {"a 24,0 V +-2 %\n", "1: \"24,0\" is not a limit (24.0 V +-2 %, 10..40 degC, is OK)"},
        {"\na 24 +-2 %\n",
         "2: \"+-2\" is not a unit (V, mV, A, pA, W, Ohm, s, ms, Hz, degC, rpm, %)"},
        {"a 24 V\n", "1: the line ends where a tolerance (+-2 %) is expected"},
        {"a 24 V +-2\n", "1: the line ends where a unit ("},
        {"a 24 V +-2 % of fun\n", "1: \"fun\" is not what per cent can refer to"},
        {"a 24 V +-x %\n", "1: \"+-x\" is not a tolerance"},
        {"a 40..10 V\n", "1: \"40..10\" is not a range"},
        {"a nan..10 V\n", "1: \"nan..10\" is not a range"},
        {"a 1..10 V what\n", "1: \"what\" is not a tolerance (+-2 %) or the end of the line"},
        {"a is\n", "1: the line ends where a word is expected"},
        {"a\n", "1: the line ends where a limit"},
        {"expect slot4 HVPS\n", "1: \"slot4\" is not a unit (base, slot0, slot1, slot2, slot3)"},
        {"expect slot1 HV\n", "1: \"HV\" is not a device type (KOVCT-BASE, HTCTRL, HVPS)"},
        {"waive a until 2026-13-01 \"x\"\n", "1: \"2026-13-01\" is not a day (2027-06-30)"},
        {"waive a until 2027-02-31 \"x\"\n", "1: \"2027-02-31\" is not a day (2027-06-30)"},
        {"waive a until 2026-12-01\n", "1: the line ends where a reason is expected"},
        {"waive a 2026-12-01 x\n", "1: \"2026-12-01\" is not \"until\" behind a key"},
        {"a is \"OK\nb is \x01\n", "1: a quotation mark is missing"},
        {"a is \x01\n", "1: a control character"},
    };
    for (const auto& c : cases) {
        companion::Limits limits;
        std::string problem;
        EXPECT_EQ(companion::read_limits(c.text, limits, problem), *c.problem == '\0') << c.text;
        EXPECT_THAT(problem, StartsWith(c.problem));
    }
}

TEST(Limits, Patterns)
{
    const struct {
        const char *key, *pattern;
        bool fits;
    } cases[] = {{"a/b", "a/b", true},
                 {"a/b", "*/b", true},
                 {"a/b/c", "*/c", false},
                 {"a/b/c", "**/c", true},
                 {"a/b/c", "a/*", false},
                 {"a/b/c", "a/**", true},
                 {"slot1/24V", "slot*/24V", true},
                 {"a/b", "a/b/*", false},
                 {"ab", "a*b", true}};
    for (const auto& c : cases)
        EXPECT_EQ(companion::fits_pattern(c.key, c.pattern), c.fits) << c.key << ' ' << c.pattern;
    EXPECT_EQ(companion::unit_ratio("V", "mV"), 1000.0);
    EXPECT_EQ(companion::unit_ratio("degC", "\xB0"
                                            "C"),
              1.0);
    EXPECT_EQ(companion::unit_ratio("V", "A"), std::nullopt);
}

/// The value of a fact for which its series ends just there.
double ending_at(const companion::Fact& fact, double end, bool high)
{
    const companion::Spread spread = fact.spread.value_or(companion::Spread{});
    return high ? end - spread.above : end + spread.below;
}

TEST(Limits, EveryDefaultIsKeptInsideAndBrokenOutside)
{
    JudgedReport sound{acceptance_report({"latency 40"})};
    std::vector<std::string> unused;
    for (const companion::Limit& rule : sound.limits.rules)
        unused.push_back(rule.pattern);
    for (std::size_t i = 0; i < sound.report.facts.size(); ++i) {
        const companion::Judgement before = sound.judged.judgements[i];
        if (before.limit == nullptr)
            continue;
        std::erase(unused, before.limit->pattern);
        companion::Fact& fact = sound.report.facts[i];
        const companion::Fact kept = fact;
        const auto outcome = [&] {
            return companion::judge(sound.report, sound.limits, {"2026-03-14", true})
                .judgements[i]
                .outcome;
        };
        if (!before.limit->words.empty()) {
            fact.text = "something else";
            EXPECT_EQ(outcome(), Outcome::broken) << fact.key;
        } else {
            ASSERT_TRUE(before.band.has_value());
            const double step = std::max(1e-9, (before.band->high - before.band->low) * 1e-6);
            const double width = std::isinf(step) ? 1e-3 : step;
            for (const bool high : {false, true}) {
                const double end = high ? before.band->high : before.band->low;
                if (std::isinf(end))
                    continue;
                const double outwards = high ? width : -width;
                fact.value = ending_at(fact, end, high) - outwards;
                EXPECT_NE(outcome(), Outcome::broken) << fact.key;
                if (std::isfinite(step)) {
                    EXPECT_EQ(outcome() == Outcome::marginal, before.band->high > before.band->low)
                        << fact.key;
                }
                fact.value = ending_at(fact, end, high) + outwards;
                EXPECT_EQ(outcome(), Outcome::broken) << fact.key;
            }
            if (std::isfinite(step)) { // just before the last tenth
                const double half = (before.band->high - before.band->low) / 2;
                fact.spread.reset();
                fact.value = before.band->low + half * 1.88;
                EXPECT_EQ(outcome(), Outcome::kept) << fact.key;
            }
        }
        fact = kept;
    }
    EXPECT_THAT(unused, testing::IsEmpty()) << "a rule that nothing is judged by";
}

} // namespace
