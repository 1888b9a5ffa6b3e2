// Any bytes as a report of the acceptance test: it is read, judged and written in every form, and
// passes only when it is whole.

#include "companion/report/judge.h"
#include "companion/report/reading/written_forms.h"
#include "companion/report/sql_output.h"
#include "tests/fuzz/target.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace
{

const companion::Limits& usual_limits()
{
    static const companion::Limits limits = [] {
        companion::Limits read;
        std::string problem;
        require(companion::read_limits(companion::default_limits(), read, problem));
        return read;
    }();
    return limits;
}

/// What a form writes.
template <class Write>
std::string written(Write write)
{
    std::string text;
    const companion::Surroundings outside{.out =
                                              [&](std::string_view bytes) {
                                                  text += bytes;
                                                  return true;
                                              },
                                          .err = [](std::string_view) { return true; },
                                          .colored = false,
                                          .today = "2026-03-14"};
    companion::TextFile file;
    require(file.open("-", outside));
    write(file);
    require(file.close());
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes{as_text(data, size)};
    const companion::Report report = companion::read_report("fuzzed", bytes);
    const companion::Judged judged = companion::judge(report, usual_limits(), {"2026-03-14", true});
    require(judged.judgements.size() == report.facts.size());
    if (judged.verdict == companion::Verdict::pass)
        require(report.problems.empty() &&
                bytes.find("Test protocol successfully completed within ") != std::string::npos);
    for (const companion::Fact& fact : report.facts)
        require(fact.line > 0 && fact.line <= std::count(bytes.begin(), bytes.end(), '\n'));
    const std::string json = written([&](companion::TextFile& file) {
        companion::begin_json(file);
        companion::write_json(file, judged, true);
        companion::end_json(file, {});
    });
    require(nlohmann::json::accept(json));
    const std::string markup = written([&](companion::TextFile& file) {
        companion::write_junit(file, judged);
        companion::write_html(file, judged);
        companion::write_sql(file, judged);
    });
    require(std::all_of(markup.begin(), markup.end(),
                        [](char c) { return static_cast<unsigned char>(c) >= ' ' || c == '\n'; }));
    return 0;
}
