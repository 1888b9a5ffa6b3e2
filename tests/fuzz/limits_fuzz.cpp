// Any bytes as a limits file: it is refused with a line's number, or judges a fact.

#include "companion/report/judge.h"
#include "tests/fuzz/target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    companion::Limits limits;
    std::string problem;
    if (!companion::read_limits(std::string{as_text(data, size)}, limits, problem)) {
        require(!problem.empty() && problem.front() >= '1' && problem.front() <= '9');
        return 0;
    }
    companion::Report report;
    report.is_report = true;
    companion::Fact fact;
    fact.key = "slot1/housekeeping/24V";
    fact.value = 24.0;
    fact.unit = "V";
    fact.spread = companion::Spread{0.01, 0.02, 0.02};
    fact.references = {{{"target", 24.0}, {"range", 3000.0}}};
    report.facts.push_back(fact);
    const companion::Judged judged = companion::judge(report, limits, {"2026-03-14", true});
    require(judged.judged + judged.not_judged == 1);
    require(judged.judgements.front().outcome != companion::Outcome::waived ||
            !limits.waivers.empty());
    return 0;
}
