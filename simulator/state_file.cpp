#include "simulator/state_file.h"

#include "simulator/scenario/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>

namespace simulator
{

namespace
{

constexpr std::string_view first_line = "KOV simulated instrument, state 1\n";
constexpr std::string_view last_word = "checksum ";

std::uint64_t checksum(std::string_view text)
{
    std::uint64_t sum = 0xCBF2'9CE4'8422'2325U;
    for (const char character : text)
        sum = (sum ^ static_cast<unsigned char>(character)) * 0x100'0000'01B3U;
    return sum;
}

template <typename T>
void add(std::string& text, T value)
{
    std::array<char, 32> digits{};
    if constexpr (std::is_floating_point_v<T>) {
        std::snprintf(digits.data(), digits.size(), "%.17g ", value);
        text += digits.data();
    } else {
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        text.append(digits.data(), end);
        text += ' ';
    }
}

/// A line of a word and numbers.
template <typename... Numbers>
void add_line(std::string& text, std::string_view word, Numbers... numbers)
{
    text += word;
    text += ' ';
    (add(text, numbers), ...);
    text.back() = '\n';
}

void add_memory(std::string& text, const Memory& memory)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr std::array<std::uint8_t, record_size> zeros{};
    for (unsigned number = 0; number * record_size < memory_size; ++number) {
        const std::uint8_t* const begin = memory.bytes.get() + number * record_size;
        const std::uint8_t* const end = begin + record_size;
        if (std::equal(begin, end, zeros.begin()))
            continue;
        text += "record ";
        add(text, number);
        // This is most of the state, and written after each change.
        text.resize(text.size() + 2 * record_size);
        char* place = text.data() + text.size() - 2 * record_size;
        for (const std::uint8_t* byte = begin; byte != end; ++byte) {
            *place++ = digits[*byte >> 4];
            *place++ = digits[*byte & 0xF];
        }
        text += '\n';
    }
}

/// Takes words from the front of a text.
class Reader
{
public:
    explicit Reader(std::string_view text) : rest(text) {}

    std::string_view word()
    {
        const std::size_t begin = std::min(rest.find_first_not_of(" \n"), rest.size());
        rest.remove_prefix(begin);
        const std::size_t length = std::min(rest.find_first_of(" \n"), rest.size());
        const std::string_view taken = rest.substr(0, length);
        rest.remove_prefix(length);
        return taken;
    }

    template <typename T>
    bool number(T& value, int radix = 10)
    {
        const std::string_view taken = word();
        if constexpr (std::is_floating_point_v<T>) {
            return read_real(taken, value);
        } else {
            const auto [end, error] =
                std::from_chars(taken.data(), taken.data() + taken.size(), value, radix);
            return error == std::errc{} && end == taken.data() + taken.size();
        }
    }

    template <typename... Numbers>
    bool line(std::string_view expected, Numbers&... numbers)
    {
        return word() == expected && (number(numbers) && ...);
    }

private:
    std::string_view rest;
};

bool read_record(Reader& reader, Memory& memory)
{
    unsigned number = 0;
    if (!reader.number(number) || number * record_size >= memory_size)
        return false;
    const std::string_view digits = reader.word();
    if (digits.size() != 2 * record_size)
        return false;
    for (std::size_t i = 0; i < record_size; ++i) {
        const char* const begin = digits.data() + 2 * i;
        std::uint8_t& byte = memory.bytes[number * record_size + i];
        if (std::from_chars(begin, begin + 2, byte, 16).ptr != begin + 2)
            return false;
    }
    return true;
}

bool read_clocks(Reader& reader, Instrument& instrument)
{
    for (Clock& clock : instrument.clocks) {
        int operating = 0;
        if (!reader.line("clock", clock.started_us, clock.before_us, operating,
                         clock.operating_since_us, clock.operated_us, clock.operated_before_us))
            return false;
        clock.operating = operating != 0;
    }
    return true;
}

bool read_parts(Reader& reader, Instrument& instrument)
{
    int base_activated = 0;
    if (!reader.line("time", instrument.now_us, instrument.next_step_us, instrument.origin_us) ||
        !read_clocks(reader, instrument) || !reader.line("base", base_activated))
        return false;
    instrument.base_activated = base_activated != 0;
    for (Scanned& saved : instrument.saved)
        if (!reader.line("saved", saved.product_number, saved.hardware_type))
            return false;
    if (!reader.line("heater", instrument.heater.temperature))
        return false;
    instrument.heater.sample.temperature = instrument.heater.temperature;
    for (Supply& supply : instrument.supplies)
        if (!reader.line("supply", supply.set, supply.output))
            return false;
    instrument.memory = {};
    for (;;) {
        const std::string_view word = reader.word();
        if (word == "end")
            return true;
        if (word != "record" || !read_record(reader, instrument.memory))
            return false;
    }
}

} // namespace

std::string write_state(const Instrument& instrument)
{
    std::string text{first_line};
    add_line(text, "time", instrument.now_us, instrument.next_step_us, instrument.origin_us);
    for (const Clock& clock : instrument.clocks)
        add_line(text, "clock", clock.started_us, clock.before_us, clock.operating ? 1 : 0,
                 clock.operating_since_us, clock.operated_us, clock.operated_before_us);
    add_line(text, "base", instrument.base_activated ? 1 : 0);
    for (const Scanned& saved : instrument.saved)
        add_line(text, "saved", saved.product_number, saved.hardware_type);
    add_line(text, "heater", instrument.heater.temperature);
    for (const Supply& supply : instrument.supplies)
        add_line(text, "supply", supply.set, supply.output);
    add_memory(text, instrument.memory);
    text += "end\n";
    const std::uint64_t sum = checksum(text);
    add_line(text, "checksum", sum);
    return text;
}

bool read_state(Instrument& instrument, const std::string& text)
{
    const std::size_t end = text.rfind(last_word);
    if (!text.starts_with(first_line) || end == std::string::npos)
        return false;
    Reader sum_reader(std::string_view(text).substr(end + last_word.size()));
    std::uint64_t sum = 0;
    if (!sum_reader.number(sum) || sum != checksum(std::string_view(text).substr(0, end)))
        return false;
    Instrument left;
    left.physical = instrument.physical;
    Reader reader(std::string_view(text).substr(first_line.size(), end - first_line.size()));
    if (!read_parts(reader, left))
        return false;
    instrument = std::move(left);
    return true;
}

} // namespace simulator
