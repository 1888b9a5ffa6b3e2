#include "simulator/state_file.h"

#include "simulator/model/operation.h"
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

/// What no instrument can have becomes what it has without a past.
double sensible(double value, double limit, double otherwise)
{
    return value > -limit && value < limit ? value : otherwise;
}

/// A time that an instrument can have, between 1970 and the year 9999, or the length of such a
/// time: three of them make no overflow.
bool is_time(std::int64_t microseconds)
{
    return microseconds >= 0 && microseconds <= 253'402'300'800'000'000;
}

/// The first step that is yet to be made is the next one.
bool read_times(Reader& reader, Instrument& instrument)
{
    const std::int64_t& now_us = instrument.now_us;
    return reader.line("time", instrument.now_us, instrument.next_step_us, instrument.origin_us) &&
           is_time(now_us) && instrument.next_step_us > now_us &&
           instrument.next_step_us <= now_us + step_us && is_time(instrument.origin_us) &&
           instrument.origin_us <= now_us;
}

bool read_clocks(Reader& reader, Instrument& instrument)
{
    for (Clock& clock : instrument.clocks) {
        int operating = 0;
        if (!reader.line("clock", clock.started_us, clock.before_us, operating,
                         clock.operating_since_us, clock.operated_us, clock.operated_before_us))
            return false;
        if (!is_time(clock.started_us) || !is_time(clock.operating_since_us) ||
            std::max(clock.started_us, clock.operating_since_us) > instrument.now_us ||
            !is_time(clock.before_us) || !is_time(clock.operated_us) ||
            !is_time(clock.operated_before_us))
            return false;
        clock.operating = operating != 0;
    }
    return true;
}

bool read_parts(Reader& reader, Instrument& instrument)
{
    int base_activated = 0;
    if (!read_times(reader, instrument) || !read_clocks(reader, instrument) ||
        !reader.line("base", base_activated))
        return false;
    instrument.base_activated = base_activated != 0;
    for (Scanned& saved : instrument.saved)
        if (!reader.line("saved", saved.product_number, saved.hardware_type))
            return false;
    if (!reader.line("heater", instrument.heater.temperature))
        return false;
    Heater& heater = instrument.heater;
    heater.temperature = sensible(heater.temperature, 10'000, Heater{}.temperature);
    heater.sample.temperature = heater.temperature;
    for (Supply& supply : instrument.supplies) {
        if (!reader.line("supply", supply.set, supply.output))
            return false;
        supply.set = sensible(supply.set, 100'000, 0);
        supply.output = sensible(supply.output, 100'000, 0);
    }
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
