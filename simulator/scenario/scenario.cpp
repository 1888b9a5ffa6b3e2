#include "simulator/scenario/scenario.h"

#include "simulator/host.h"
#include "simulator/model/the_instrument.h"
#include "simulator/scenario/injection_lines.h"
#include "simulator/scenario/settings.h"

#include <algorithm>

namespace simulator
{

namespace
{

/// A line that waits for its time.
struct Waiting {
    std::int64_t due_us; ///< monotonic
    Words words;
};

std::vector<Waiting> waiting;
std::vector<Words> file_settings;
std::string file_problem;
bool loaded = false;

bool carry_out(const Words& words, bool really, std::string& problem);

/// after MS LINE
bool after_line(const Words& words, bool really, std::string& problem)
{
    std::int64_t delay_us = 0;
    if (!read_time(words, 1, delay_us, problem))
        return false;
    Words line(words.begin() + 2, words.end());
    if (line.empty())
        return wrong(problem, "a line is missing after the time");
    if (!carry_out(line, false, problem))
        return false;
    if (really)
        waiting.push_back({host::monotonic_us() + delay_us, std::move(line)});
    return true;
}

/// Carries out a line, or only checks it.
bool carry_out(const Words& words, bool really, std::string& problem)
{
    if (words.empty())
        return true;
    if (is(words, 0, "fail"))
        return fail_line(words, really, problem);
    if (is(words, 0, "block"))
        return block_line(words, really, problem);
    if (is(words, 0, "reply"))
        return reply_line(words, really, problem);
    if (is(words, 0, "after"))
        return after_line(words, really, problem);
    return change_setting(words, really, instrument_now(), problem);
}

bool is_setting(const Words& words)
{
    return !words.empty() && !is(words, 0, "fail") && !is(words, 0, "block") &&
           !is(words, 0, "reply") && !is(words, 0, "after");
}

/// Carries out the lines of a file up to the first wrong one.
bool load_file(const std::string& path, std::string& problem)
{
    std::string text;
    std::string reason;
    switch (host::read_file(path, text, reason)) {
    case host::Reading::missing:
        return wrong(problem, "there is no scenario file '" + path + "'");
    case host::Reading::failed:
        return wrong(problem, "cannot read the scenario file '" + path + "': " + reason);
    case host::Reading::done:
        break;
    }
    std::string_view rest = text;
    for (unsigned number = 1; !rest.empty(); ++number) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        Words words;
        if (!split_words(line, words, reason) || !carry_out(words, true, reason))
            return wrong(problem, std::string("scenario '")
                                      .append(path)
                                      .append("', line ")
                                      .append(std::to_string(number))
                                      .append(": ")
                                      .append(reason));
        if (is_setting(words))
            file_settings.push_back(std::move(words));
    }
    return true;
}

} // namespace

bool carry_out_line(std::string_view line, std::string& problem)
{
    Words words;
    return split_words(line, words, problem) && carry_out(words, true, problem);
}

void load_scenario_once()
{
    if (loaded)
        return;
    loaded = true;
    const std::optional<std::string> path = host::environment("KOV_SIMULATOR_SCENARIO");
    if (path)
        (void)load_file(*path, file_problem); // Open tells about it
}

const std::string& scenario_problem()
{
    return file_problem;
}

void apply_scenario_settings()
{
    std::string problem;
    for (const Words& words : file_settings)
        (void)change_setting(words, true, the_instrument(), problem); // was right before
}

void apply_due_lines()
{
    if (waiting.empty())
        return;
    const std::int64_t now_us = host::monotonic_us();
    for (std::size_t i = 0; i < waiting.size();) {
        if (waiting[i].due_us > now_us) {
            ++i;
            continue;
        }
        const Words words = std::move(waiting[i].words);
        waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(i));
        std::string problem;
        (void)carry_out(words, true, problem); // was checked when it was given
    }
}

void forget_scenario()
{
    waiting.clear();
    file_settings.clear();
    file_problem.clear();
    loaded = false;
}

} // namespace simulator
