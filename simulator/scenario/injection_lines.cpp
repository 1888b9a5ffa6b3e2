#include "simulator/scenario/injection_lines.h"

#include "simulator/host.h"
#include "simulator/scenario/injection.h"

namespace simulator
{

namespace
{

/// A text between quotes and what is to be said about it.
std::string about(std::string_view text, std::string_view verdict)
{
    std::string line = "'";
    line += text;
    line += "' ";
    line += verdict;
    return line;
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

/// Finds a result of a function by name and, in brackets, its element.
bool read_result(std::string_view text, const FunctionInfo& function, Reply& reply,
                 std::string& problem)
{
    const std::size_t bracket = text.find('[');
    const std::string_view name = text.substr(0, bracket);
    const auto no_result = [&] {
        return wrong(problem, about(function.name(), "has no result '") + std::string(text) + "'");
    };
    if (function.returns != Returns::status) {
        const std::string_view known = function.returns == Returns::text ? "text" : "version";
        return text == known || no_result();
    }
    while (reply.parameter < function.parameter_count() &&
           (function.parameters[reply.parameter].way == Way::in ||
            std::string_view(function.parameters[reply.parameter].name) != name))
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

/// Reads which calls fail, from the word `next` on.
bool read_when(const Words& words, std::size_t& next, Fault& fault, std::string& problem)
{
    const std::size_t first = next++;
    if (is(words, first, "always"))
        return true;
    if (is(words, first, "at") || is(words, first, "every")) {
        fault.when = words[first].text == "at" ? Fault::When::at : Fault::When::every;
        return read_count(words, next++, fault.number, problem);
    }
    if (!is(words, first, "after"))
        return wrong(problem, words.size() <= first
                                  ? "'at', 'always', 'every', 'after' or 'never' is missing"
                                  : about(words[first].text, "is no kind of fault"));
    std::int64_t length_us = 0;
    if (!read_time(words, next++, fault.from_us, problem))
        return false;
    if (!is(words, next++, "for"))
        return wrong(problem, "'for' and a time are missing");
    if (!read_time(words, next++, length_us, problem))
        return false;
    fault.when = Fault::When::between;
    fault.from_us += host::monotonic_us();
    fault.until_us = fault.from_us + length_us;
    return true;
}

/// Reads what the failing call says, where the line tells it.
bool read_fault_text(const Words& words, std::size_t& next, Fault& fault, std::string& problem)
{
    if (!is(words, next, "text"))
        return true;
    if (++next >= words.size() || !words[next].quoted)
        return wrong(problem, "a text in quotes is missing after 'text'");
    fault.text = words[next++].text;
    return true;
}

/// What a reply sets: a parameter, or what the function returns.
Parameter result_of(const FunctionInfo& function, std::size_t parameter)
{
    switch (function.returns) {
    case Returns::text:
        return rows::text("text", 0);
    case Returns::version:
        return rows::u16("version");
    case Returns::status:
        break;
    }
    return function.parameters[parameter];
}

} // namespace

bool fail_line(const Words& words, bool really, std::string& problem)
{
    Fault fault;
    if (!read_function_word(words, fault.calls, problem))
        return false;
    if (fault.calls.function != no_function &&
        functions[fault.calls.function].returns != Returns::status)
        return wrong(problem, "the function '" + words[1].text + "' has no status to fail with");
    std::size_t next = 2;
    if (is(words, next, "never")) {
        if (!read_end(words, next + 1, problem))
            return false;
        if (really)
            remove_faults(fault.calls);
        return true;
    }
    if (!read_when(words, next, fault, problem) || !read_fault_text(words, next, fault, problem) ||
        !read_end(words, next, problem))
        return false;
    if (really)
        add_fault(std::move(fault));
    return true;
}

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
    if (!read_values(words, 2, result_of(function, reply.parameter), direct, reply.values, problem))
        return false;
    if (really)
        add_reply(std::move(reply));
    return true;
}

} // namespace simulator
