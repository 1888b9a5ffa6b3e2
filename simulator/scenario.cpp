#include "simulator/scenario.h"

#include "simulator/call.h"
#include "simulator/host.h"
#include "simulator/injection.h"
#include "simulator/session.h"
#include "simulator/settings.h"
#include "simulator/simulator.h"

#include <cmath>

namespace simulator
{

namespace
{

/// A line that waits for its time.
struct Waiting {
    std::int64_t due_us; ///< monotonic
    std::vector<Word> words;
};

std::vector<Waiting> waiting;
std::vector<std::vector<Word>> file_settings;
std::string file_problem;
bool loaded = false;

using Words = std::vector<Word>;

bool wrong(std::string& problem, std::string text)
{
    problem = std::move(text);
    return false;
}

/// A text between quotes and what is to be said about it.
std::string about(std::string_view text, std::string_view verdict)
{
    std::string line = "'";
    line += text;
    line += "' ";
    line += verdict;
    return line;
}

bool is(const Words& words, std::size_t place, std::string_view text)
{
    return place < words.size() && !words[place].quoted && words[place].text == text;
}

/// Reads the number in words[place] as milliseconds, 0 to some days.
bool read_time(const Words& words, std::size_t place, std::int64_t& time_us, std::string& problem)
{
    double milliseconds = 0;
    if (place >= words.size())
        return wrong(problem, "a time in milliseconds is missing");
    if (words[place].quoted || !read_real(words[place].text, milliseconds) ||
        !(milliseconds >= 0 && milliseconds <= 1e9))
        return wrong(problem,
                     "a time in milliseconds is expected, not '" + words[place].text + "'");
    time_us = std::llround(milliseconds * 1000);
    return true;
}

/// Reads the number of a call, from 1 on.
bool read_count(const Words& words, std::size_t place, std::uint32_t& count, std::string& problem)
{
    std::int64_t value = 0;
    if (place >= words.size())
        return wrong(problem, "a number is missing after '" + words[place - 1].text + "'");
    if (words[place].quoted || !read_integer(words[place].text, value) || value < 1 ||
        value > 0x7FFF'FFFF)
        return wrong(problem, "a number from 1 on is expected, not '" + words[place].text + "'");
    count = static_cast<std::uint32_t>(value);
    return true;
}

bool read_end(const Words& words, std::size_t place, std::string& problem)
{
    return place >= words.size() || wrong(problem, about(words[place].text, "is too much"));
}

/// Reads FUNCTION, FUNCTION@NUMBER or, where `any` allows it, "*".
bool read_calls(std::string_view text, bool any, Calls& calls, std::string& problem)
{
    if (any && text == "*")
        return true;
    const std::size_t at = text.find('@');
    calls.function = find_function(text.substr(0, at));
    if (calls.function == no_function)
        return wrong(problem, "there is no function '" + std::string(text.substr(0, at)) + "'");
    if (at == std::string_view::npos)
        return true;
    std::int64_t key = 0;
    if (!read_integer(text.substr(at + 1), key) || key < 0)
        return wrong(problem, "wrong address or index '" + std::string(text.substr(at + 1)) + "'");
    calls.key = static_cast<std::uint32_t>(key);
    return true;
}

bool read_function_word(const Words& words, Calls& calls, std::string& problem)
{
    if (words.size() < 2 || words[1].quoted)
        return wrong(problem, "a function is missing after '" + words[0].text + "'");
    return read_calls(words[1].text, true, calls, problem);
}

/// fail FUNCTION always | never | at N | every N | after MS for MS [text "..."]
bool fail_line(const Words& words, bool really, std::string& problem)
{
    Fault fault;
    if (!read_function_word(words, fault.calls, problem))
        return false;
    if (fault.calls.function != no_function &&
        functions[fault.calls.function].returns != Returns::status)
        return wrong(problem, "the function '" + words[1].text + "' has no status to fail with");
    std::size_t next = 3;
    if (is(words, 2, "never")) {
        if (!read_end(words, next, problem))
            return false;
        if (really)
            remove_faults(fault.calls);
        return true;
    }
    if (is(words, 2, "at") || is(words, 2, "every")) {
        fault.when = words[2].text == "at" ? Fault::When::at : Fault::When::every;
        if (!read_count(words, next++, fault.number, problem))
            return false;
    } else if (is(words, 2, "after")) {
        std::int64_t length_us = 0;
        if (!read_time(words, 3, fault.from_us, problem))
            return false;
        if (!is(words, 4, "for"))
            return wrong(problem, "'for' and a time are missing");
        if (!read_time(words, 5, length_us, problem))
            return false;
        fault.when = Fault::When::between;
        fault.from_us += host::monotonic_us();
        fault.until_us = fault.from_us + length_us;
        next = 6;
    } else if (!is(words, 2, "always")) {
        return wrong(problem, words.size() < 3
                                  ? "'at', 'always', 'every', 'after' or 'never' is missing"
                                  : about(words[2].text, "is no kind of fault"));
    }
    if (is(words, next, "text")) {
        if (next + 1 >= words.size() || !words[next + 1].quoted)
            return wrong(problem, "a text in quotes is missing after 'text'");
        fault.text = words[next + 1].text;
        next += 2;
    }
    if (!read_end(words, next, problem))
        return false;
    if (really)
        add_fault(std::move(fault));
    return true;
}

/// block FUNCTION [at N] for MS | block FUNCTION never
bool block_line(const Words& words, bool really, std::string& problem)
{
    Block block;
    if (!read_function_word(words, block.calls, problem))
        return false;
    if (is(words, 2, "never")) {
        if (!read_end(words, 3, problem))
            return false;
        if (really)
            remove_blocks(block.calls);
        return true;
    }
    std::size_t next = 2;
    if (is(words, next, "at")) {
        if (!read_count(words, next + 1, block.number, problem))
            return false;
        next += 2;
    }
    if (!is(words, next, "for"))
        return wrong(problem, "'for' and a time are missing");
    if (!read_time(words, next + 1, block.wait_us, problem) || !read_end(words, next + 2, problem))
        return false;
    if (really)
        add_block(block);
    return true;
}

/// Finds a result of a function by name and, in brackets, its element.
bool read_result(std::string_view text, const FunctionInfo& function, Reply& reply,
                 std::string& problem)
{
    const std::size_t bracket = text.find('[');
    const std::string_view name = text.substr(0, bracket);
    const auto no_result = [&] {
        return wrong(problem, about(function.name(), "has no result '") + std::string(text) + "'");
    };
    if (function.returns != Returns::status)
        return name == (function.returns == Returns::text ? "text" : "version") &&
                       bracket == std::string_view::npos
                   ? true
                   : no_result();
    while (reply.parameter < function.parameter_count() &&
           (function.parameters[reply.parameter].way == Way::in ||
            function.parameters[reply.parameter].name != name))
        ++reply.parameter;
    if (reply.parameter == function.parameter_count())
        return no_result();
    if (bracket == std::string_view::npos)
        return true;
    const Parameter& parameter = function.parameters[reply.parameter];
    const bool closed = text.ends_with(']');
    const bool is_array = parameter.kind != Kind::text && parameter.count != 1;
    if (!closed || !is_array ||
        !read_integer(text.substr(bracket + 1, text.size() - bracket - 2), reply.element) ||
        reply.element < 0 || (parameter.count > 0 && reply.element >= parameter.count))
        return no_result();
    return true;
}

/// reply FUNCTION.RESULT[ELEMENT]@NUMBER VALUE ... | reply ... never
bool reply_line(const Words& words, bool really, std::string& problem)
{
    if (words.size() < 2 || words[1].quoted)
        return wrong(problem, "FUNCTION.RESULT is missing after 'reply'");
    const std::string_view text = words[1].text;
    const std::size_t dot = text.find('.');
    const std::size_t at = std::min(text.find('@'), text.size());
    if (dot == std::string_view::npos || dot > at)
        return wrong(problem, "a result is missing in '" + words[1].text + "'");
    Reply reply;
    const std::string calls = std::string(text.substr(0, dot)) + std::string(text.substr(at));
    if (!read_calls(calls, false, reply.calls, problem))
        return false;
    const FunctionInfo& function = functions[reply.calls.function];
    if (!read_result(text.substr(dot + 1, at - dot - 1), function, reply, problem))
        return false;
    if (is(words, 2, "never")) {
        if (!read_end(words, 3, problem))
            return false;
        if (really)
            remove_replies(reply.calls, reply.parameter, reply.element);
        return true;
    }
    const bool direct = function.returns != Returns::status;
    const Parameter result = function.returns == Returns::text ? rows::text("text", 0)
                             : function.returns == Returns::version
                                 ? rows::u16("version")
                                 : function.parameters[reply.parameter];
    if (!read_values(words, 2, result, direct, reply.values, problem))
        return false;
    if (really)
        add_reply(std::move(reply));
    return true;
}

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
            return wrong(problem,
                         "scenario '" + path + "', line " + std::to_string(number) + ": " + reason);
        if (is_setting(words))
            file_settings.push_back(std::move(words));
    }
    return true;
}

} // namespace

bool apply(std::string_view line, std::string& problem)
{
    make_instrument_once();
    Words words;
    const bool right = split_words(line, words, problem) && carry_out(words, true, problem);
    call_conditions_changed();
    return right;
}

void load_scenario_once()
{
    if (loaded)
        return;
    loaded = true;
    make_instrument_once();
    const std::optional<std::string> path = host::environment("KOV_SIMULATOR_SCENARIO");
    if (path)
        (void)load_file(*path, file_problem); // Open tells about it
    call_conditions_changed();
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

bool lines_wait()
{
    return !waiting.empty();
}

void apply_due_lines()
{
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
    call_conditions_changed();
}

void forget_scenario()
{
    waiting.clear();
    file_settings.clear();
    file_problem.clear();
    loaded = false;
}

} // namespace simulator
