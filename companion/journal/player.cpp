#include "companion/journal/player.h"

#include "companion/journal/format.h"
#include "companion/journal/reading/values.h"
#include "companion/journal/writer.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace journal
{

using devlib::Kind;
using devlib::Parameter;
using nlohmann::json;

namespace
{

/// Whole, since the difference may stand anywhere.
std::string whole_text(const devlib::FunctionInfo& function, const json& inputs)
{
    return call_text(function, inputs, std::string::npos);
}

/// What the program gives, as it would stand in a journal.
json inputs_of(const Call& call)
{
    std::string text = "{";
    append_inputs(text, call);
    constexpr std::string_view none = "{}";
    return text.ends_with(none) ? json::object()
                                : std::move(json::parse(text + '}')[std::string{field::inputs}]);
}

template <class T>
void store(void* target, std::size_t index, T value)
{
    std::memcpy(static_cast<char*>(target) + index * sizeof value, &value, sizeof value);
}

void store_element(void* target, std::size_t index, Kind kind, const json& value)
{
    switch (kind) {
    case Kind::u8:
        return store(target, index, value.get<std::uint8_t>());
    case Kind::u16:
        return store(target, index, value.get<std::uint16_t>());
    case Kind::u32:
        return store(target, index, value.get<std::uint32_t>());
    case Kind::i32:
        return store(target, index, value.get<std::int32_t>());
    case Kind::real32:
        return store(target, index, static_cast<float>(real_of(value).value_or(0)));
    default:
        return store(target, index, real_of(value).value_or(0));
    }
}

/// Writes a result where the caller wants it: never more than there is room for.
void store_value(const Call& call, std::size_t index, const json& value)
{
    const Parameter& parameter = call.info().parameters[index];
    void* const target = call.arguments[index].target;
    if (target == nullptr || value.is_null())
        return;
    if (parameter.kind == Kind::text) {
        const std::string text = text_of(value).value_or("");
        // One that fills its field has no terminator.
        std::memcpy(target, text.c_str(), std::min<std::size_t>(text.size() + 1, parameter.count));
    } else if (parameter.kind == Kind::bytes) {
        const std::string bytes = bytes_of(value).value_or("");
        std::memcpy(target, bytes.data(), std::min(bytes.size(), element_count(call, index)));
    } else if (parameter.count == 1) {
        store_element(target, 0, parameter.kind, value);
    } else {
        for (std::size_t i = 0; i < value.size(); ++i)
            store_element(target, i, parameter.kind, value[i]);
    }
}

} // namespace

Player::Player(std::FILE* file, const Clock& clock, bool in_real_time)
    : reader_{file}, clock_{clock}, in_real_time_{in_real_time}
{
    current_.count = 0;
}

/// The line that holds the next call.
bool Player::take_next()
{
    if (answered_ < current_.count)
        return true;
    answered_ = 0;
    current_.count = 0;
    if (reader_.next(current_))
        return true;
    current_.count = 0;
    return false;
}

std::string Player::expected()
{
    if (take_next())
        return whole_text(current_.info(), current_.inputs);
    if (!reader_.problem().empty())
        return "nothing, the journal is not sound: " + reader_.problem();
    if (reader_.is_torn())
        return "nothing, the journal is torn off here";
    return reader_.ending() ? "nothing, the journal ends here"
                            : "nothing, the journal breaks off here";
}

bool Player::answer(const Call& call, Returned& returned, std::string& difference)
{
    ++number_;
    const json inputs = inputs_of(call);
    if (!take_next() || current_.row != call.row || current_.inputs != inputs) {
        difference = "call " + std::to_string(number_) + " differs from the journal: expected " +
                     expected() + ", actual " + whole_text(call.info(), inputs);
        return false;
    }
    let_time_pass();
    ++answered_;
    returned = give(call);
    return true;
}

/// Of identical polls the sum of the durations is known: each gets its part.
void Player::let_time_pass()
{
    if (!in_real_time_)
        return;
    const auto count = static_cast<double>(current_.count);
    const auto until = [&](std::uint64_t calls) {
        return static_cast<std::int64_t>(static_cast<double>(current_.us) *
                                         (static_cast<double>(calls) / count));
    };
    clock_.rest_us(until(answered_ + 1) - until(answered_));
}

Returned Player::give(const Call& call)
{
    Returned returned = {.status = current_.status, .version = current_.version};
    if (current_.text) {
        texts_[call.row] = *current_.text;
        returned.text = texts_[call.row].c_str();
    }
    for (std::size_t i = 0; i < call.arguments.size() && current_.outputs.is_object(); ++i) {
        const Parameter& parameter = call.info().parameters[i];
        if (parameter.way != devlib::Way::in)
            store_value(call, i,
                        current_.outputs.at(std::string{std::string_view{parameter.name}}));
    }
    return returned;
}

std::string Player::left()
{
    if (!take_next())
        return {};
    return "the program has ended, but the journal goes on with call " +
           std::to_string(number_ + 1) + ", " + expected();
}

} // namespace journal
