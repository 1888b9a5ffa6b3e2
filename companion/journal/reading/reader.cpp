#include "companion/journal/reading/reader.h"

#include "companion/journal/format.h"
#include "companion/journal/reading/values.h"

#include <cerrno>
#include <cstring>

namespace journal
{

using devlib::Way;
using nlohmann::json;

namespace
{

/// The member of that name; null where there is none.
const json& member(const json& object, std::string_view name)
{
    static const json none;
    const auto found = object.find(std::string{name});
    return found == object.end() ? none : *found;
}

std::string text_member(const json& object, std::string_view name)
{
    return text_of(member(object, name)).value_or("");
}

/// False when it is there, but no whole number within these.
template <class T>
bool take_number(const json& object, std::string_view name, T& number, std::int64_t lowest,
                 std::int64_t highest)
{
    const json& value = member(object, name);
    if (value.is_null())
        return true;
    if (!value.is_number_integer() ||
        (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t{INT64_MAX}))
        return false;
    const auto given = value.get<std::int64_t>();
    number = static_cast<T>(given);
    return given >= lowest && given <= highest;
}

/// Bytes are as many as the input before them tells.
bool has_told_size(const json& bytes, const json& inputs, const devlib::Parameter& before)
{
    return bytes.is_null() ||
           member(inputs, before.name) == json(bytes_of(bytes).value_or("").size());
}

/// Whether these are the values of all parameters that go that way, and nothing else.
bool are_values(const json& values, const json& inputs, const devlib::FunctionInfo& function,
                Way other_way)
{
    if (!values.is_object())
        return false;
    std::size_t found = 0;
    for (std::size_t i = 0; i < function.parameter_count(); ++i) {
        const devlib::Parameter& parameter = function.parameters[i];
        if (parameter.way == other_way)
            continue;
        const auto value = values.find(std::string{std::string_view{parameter.name}});
        if (value == values.end() || !is_value(*value, parameter))
            return false;
        if (parameter.kind == devlib::Kind::bytes && parameter.count == 0 &&
            !has_told_size(*value, inputs, function.parameters[i - 1]))
            return false;
        ++found;
    }
    return found == values.size();
}

/// What a function gave back, by what it can give back.
bool take_results(const json& line, RecordedCall& call)
{
    switch (call.info().returns) {
    case devlib::Returns::version:
        return member(line, field::version).is_number() &&
               take_number(line, field::version, call.version, 0, UINT16_MAX);
    case devlib::Returns::text:
        call.text = text_of(member(line, field::text));
        return line.contains(field::text) && (call.text || member(line, field::text).is_null());
    case devlib::Returns::status:
        break;
    }
    if (!member(line, field::status).is_number() ||
        !take_number(line, field::status, call.status, INT32_MIN, INT32_MAX))
        return false;
    call.error = text_member(line, field::error);
    call.outputs = member(line, field::outputs);
    return call.status != 0 ? call.outputs.is_null()
                            : are_values(call.outputs, call.inputs, call.info(), Way::in);
}

/// What is wrong with the line of a call; empty when nothing is.
std::string take_call(const json& line, RecordedCall& call)
{
    constexpr std::int64_t most_us = 3'155'760'000'000'000; // a century: sums of it fit, too
    const std::string name = text_member(line, field::function);
    call.row = devlib::find_function(name);
    if (name.empty() || call.row == devlib::no_function)
        return "it is no call of the device library";
    if (!take_number(line, field::number, call.number, 1, INT64_MAX) ||
        !take_number(line, field::count, call.count, 1, INT64_MAX) ||
        !take_number(line, field::duration, call.us, 0, most_us))
        return "its numbers are none";
    call.longest_us = call.us;
    if (!take_number(line, field::longest, call.longest_us, 0, most_us))
        return "its numbers are none";
    call.time = text_member(line, field::time);
    call.last = text_member(line, field::last);
    call.inputs = member(line, field::inputs);
    if (!are_values(call.inputs, call.inputs, call.info(), Way::out))
        return "the inputs are none of " + name;
    if (!take_results(line, call))
        return "the results are none of " + name;
    return {};
}

} // namespace

bool RecordedCall::failed() const
{
    return info().returns == devlib::Returns::status && status != 0;
}

Reader::Reader(std::FILE* file) : file_{file}
{
    json line;
    if (file_ == nullptr)
        fail("it cannot be read");
    else if (parse_line(line))
        take_heading(line);
    else if (problem_.empty())
        fail("it is no journal of library calls");
}

bool Reader::fail(std::string_view what)
{
    problem_ = "line " + std::to_string(line_number_) + ": ";
    problem_ += what;
    if (line_number_ == 0)
        problem_ = what;
    return false;
}

/// False at the end of the file; what follows the last line end is a line, too. What is no journal
/// may have no line ends at all: longer lines than a journal's are not read to their end.
bool Reader::read_line(std::string& line)
{
    line.clear();
    ++line_number_;
    for (;;) {
        const std::size_t end = buffer_.find('\n', taken_);
        line.append(buffer_, taken_, end == std::string::npos ? end : end - taken_);
        taken_ = end == std::string::npos ? buffer_.size() : end + 1;
        if (end != std::string::npos)
            return true;
        constexpr std::size_t piece = 1 << 16, longest = 1 << 22;
        if (line.size() > longest)
            return fail("it is too long");
        buffer_.resize(piece);
        buffer_.resize(std::fread(buffer_.data(), 1, piece, file_));
        taken_ = 0;
        if (buffer_.empty()) {
            is_torn_ = is_torn_ || !line.empty();
            return !line.empty();
        }
    }
}

bool Reader::parse_line(json& object)
{
    std::string line;
    if (!read_line(line)) {
        if (std::ferror(file_) != 0)
            fail(std::string{"it cannot be read: "} + std::strerror(errno));
        return false;
    }
    object = json::parse(line, nullptr, false);
    if (object.is_object()) {
        is_torn_ = false; // whoever edits a file may leave the last line end out
        return true;
    }
    return is_torn_ && !ending_ ? false : fail("it is no JSON object");
}

void Reader::take_heading(const json& line)
{
    const json& schema = member(line, field::schema);
    if (!schema.is_number_integer()) {
        fail("it is no journal of library calls");
        return;
    }
    if (schema != json(schema_version)) {
        fail("its schema has version " + schema.dump() + ", this program knows " +
             std::to_string(schema_version));
        return;
    }
    heading_.program = text_member(line, field::program);
    heading_.library = text_member(line, field::library);
    heading_.system = text_member(line, field::system);
    heading_.time = text_member(line, field::time);
    (void)take_number(line, field::library_version, heading_.library_version, 0, UINT16_MAX);
    if (const json& arguments = member(line, field::arguments); arguments.is_array()) {
        for (const json& argument : arguments)
            heading_.arguments.push_back(text_of(argument).value_or(""));
    }
}

bool Reader::take_ending(const json& line)
{
    Ending ending;
    ending.time = text_member(line, field::end);
    if (!take_number(line, field::calls, ending.calls, 0, INT64_MAX) ||
        !take_number(line, field::failures, ending.failures, 0, INT64_MAX))
        return fail("its totals are no numbers");
    if (ending.calls != calls_ || ending.failures != failures_)
        return fail("the end tells " + std::to_string(ending.calls) + " calls and " +
                    std::to_string(ending.failures) + " failures, but there are " +
                    std::to_string(calls_) + " and " + std::to_string(failures_));
    ending_ = std::move(ending);
    return true;
}

bool Reader::next(RecordedCall& call)
{
    json line;
    if (!problem_.empty() || !parse_line(line))
        return false;
    if (ending_)
        return fail("it stands behind the end");
    if (line.contains(field::end)) {
        if (!take_ending(line))
            return false;
        return next(call); // nothing may follow
    }
    call = {};
    if (const std::string problem = take_call(line, call); !problem.empty())
        return fail(problem);
    if (call.number != calls_ + 1)
        return fail(call.number > calls_
                        ? "call " + std::to_string(calls_ + 1) + " is missing"
                        : "call " + std::to_string(call.number) + " stands there twice");
    if (call.count > std::uint64_t{INT64_MAX} - call.number)
        return fail("its numbers are none");
    calls_ += call.count;
    failures_ += call.failed() ? call.count : 0;
    return true;
}

} // namespace journal
