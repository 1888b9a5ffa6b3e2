#include "config/record.h"

#include "frame/text/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{

std::uint32_t raw_value(const ConfigEntry& entry, const ConfigRecord& record)
{
    std::uint32_t value = 0;
    for (std::size_t i = entry.size; i-- > 0;)
        value = value << 8 | record.bytes[entry.offset + i];
    return value;
}

void set_raw_value(const ConfigEntry& entry, std::uint32_t value, ConfigRecord& record)
{
    for (std::size_t i = 0; i < entry.size; ++i)
        record.bytes[entry.offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// ---- Letters ----

/// The bits that the four letters stand for: not in order, and to stay so, as files hold them.
constexpr std::array interlock_bits = {2, 3, 0, 1};

/// Two entries share the byte of the interlocks.
constexpr int first_bit(EntryKind kind)
{
    return kind == EntryKind::high_interlocks ? 4 : 0;
}

/// The states of the fan switch, and the bits that their words set.
struct FanSwitchWord {
    const char* text;
    std::uint8_t bits;
};
constexpr std::array<FanSwitchWord, 3> fan_switch_words = {{{"No", 0}, {"Off", 1}, {"On", 3}}};

std::string interlock_letters(std::uint32_t bits)
{
    std::string text;
    for (const int bit : interlock_bits) {
        text += text.empty() ? "" : ",";
        text += (bits >> bit & 1u) != 0 ? 'Y' : 'N';
    }
    return text;
}

/// Exactly four fields between commas; only the first letter of each counts, in either case.
bool read_interlock_letters(std::string_view text, std::uint32_t& bits)
{
    bits = 0;
    for (std::size_t i = 0; i < interlock_bits.size(); ++i) {
        const bool last = i + 1 == interlock_bits.size();
        const std::size_t comma = text.find(',');
        if (text.empty() || last != (comma == std::string_view::npos))
            return false;
        const char letter = text.front();
        if (letter == 'Y' || letter == 'y')
            bits |= 1u << interlock_bits[i];
        else if (letter != 'N' && letter != 'n')
            return false;
        text.remove_prefix(last ? text.size() : comma + 1);
    }
    return true;
}

bool read_fan_switch(std::string_view text, std::uint32_t& bits)
{
    const auto word =
        std::find_if(fan_switch_words.begin(), fan_switch_words.end(),
                     [text](const FanSwitchWord& known) { return text == known.text; });
    if (word == fan_switch_words.end())
        return false;
    bits = word->bits;
    return true;
}

// ---- Numbers ----

std::string number_text(double value)
{
    std::array<char, 32> text = {}; // 32 bits and a sign need 14 characters
    std::snprintf(text.data(), text.size(), "%.3lf", value);
    return text.data();
}

/// The low 32 bits of the number, rounded by adding a half and cutting the rest: -999.5 becomes
/// -999. What not even 64 bits can hold has low bits of 0.
std::uint32_t rounded(double raw)
{
    constexpr double beyond = 9223372036854775808.0; // 2^63
    raw += 0.5;
    if (!(std::abs(raw) < beyond))
        return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(raw));
}

bool read_number(const ConfigEntry& entry, std::string_view text, std::uint32_t& raw)
{
    double value = 0.0;
    if (!read_real(std::string{text}.c_str(), value))
        return false;
    // All negative targets mean the same. They become -999 mV, which files show as -1.000.
    if (entry.kind == EntryKind::target_voltage && value < 0.0)
        value = -1.0;
    raw = rounded(value * entry.steps_per_unit + entry.zero);
    return true;
}

/// What the text means, with the bits of another entry that the record has in the same byte.
bool read_raw_value(const ConfigEntry& entry, std::string_view text, const ConfigRecord& record,
                    std::uint32_t& raw)
{
    switch (entry.kind) {
    case EntryKind::yes_no:
        raw = text == "Y" ? 1 : 0;
        return text == "Y" || text == "N";
    case EntryKind::low_interlocks:
    case EntryKind::high_interlocks:
        if (!read_interlock_letters(text, raw))
            return false;
        raw = raw << first_bit(entry.kind) | raw_value(entry, record);
        return true;
    case EntryKind::fan_switch:
        return read_fan_switch(text, raw);
    case EntryKind::number:
    case EntryKind::target_voltage:
    case EntryKind::voltage_step:
        break;
    }
    return read_number(entry, text, raw);
}

} // namespace

std::string entry_text(const ConfigEntry& entry, const ConfigRecord& record)
{
    const std::uint32_t raw = raw_value(entry, record);
    switch (entry.kind) {
    case EntryKind::yes_no:
        return raw != 0 ? "Y" : "N";
    case EntryKind::low_interlocks:
    case EntryKind::high_interlocks:
        return interlock_letters(raw >> first_bit(entry.kind));
    case EntryKind::fan_switch:
        // Without the override bit the other one means nothing.
        return (raw & 1u) == 0 ? "No" : (raw & 2u) == 0 ? "Off" : "On";
    case EntryKind::target_voltage:
        if (static_cast<std::int32_t>(raw) < 0)
            return number_text(-1.0);
        break;
    case EntryKind::number:
    case EntryKind::voltage_step:
        break;
    }
    return number_text((static_cast<double>(raw) - entry.zero) / entry.steps_per_unit);
}

bool set_entry(const ConfigEntry& entry, std::string_view text, ConfigRecord& record)
{
    constexpr std::size_t most_letters = 99;
    constexpr std::size_t most_characters = 19;
    const bool is_list = entry.kind == EntryKind::low_interlocks ||
                         entry.kind == EntryKind::high_interlocks ||
                         entry.kind == EntryKind::fan_switch;
    text = text.substr(0, is_list ? most_letters : most_characters);
    std::uint32_t raw = 0;
    if (!read_raw_value(entry, text, record, raw))
        return false;
    set_raw_value(entry, raw, record);
    return true;
}
