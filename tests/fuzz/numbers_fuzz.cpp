// Any text as a number, compared with a plain reader, and as an address.

#include "frame/text/numbers.h"
#include "instrument/addresses.h"
#include "tests/fuzz/target.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace
{

/// What a reader of whole numbers makes of the text: digits of one radix between blanks, a sign and
/// the radix's letter. False when it is none.
bool read_plainly(std::string_view text, bool& negative, std::uint64_t& size)
{
    while (!text.empty() && (text[0] == ' ' || (text[0] >= '\t' && text[0] <= '\r')))
        text.remove_prefix(1);
    negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    std::string_view digits = "0123456789";
    if (text.ends_with('h'))
        digits = "0123456789abcdef";
    else if (text.ends_with('b'))
        digits = "01";
    if (digits.size() != 10)
        text.remove_suffix(1);
    if (digits.size() == 16 && text.size() > 2 &&
        (text.starts_with("0x") || text.starts_with("0X")))
        text.remove_prefix(2);
    size = 0;
    for (const char c : text) {
        const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        const std::size_t digit = digits.find(lower);
        if (digit == std::string_view::npos)
            return false;
        size = std::min(size * digits.size() + digit, std::uint64_t{1} << 40); // far beyond
    }
    return !text.empty();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text{as_text(data, size)};
    bool negative = false;
    std::uint64_t amount = 0;
    const bool is_number = read_plainly(text, negative, amount);
    std::uint32_t number = 0;
    require(read_unsigned(text, number) == is_number);
    if (is_number) {
        constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
        const auto fitting = static_cast<std::uint32_t>(std::min(amount, largest));
        require(number == (negative && amount <= largest ? 0 - fitting : fitting));
    }
    double real = 0.0;
    require(!read_real(text.c_str(), real) || std::isfinite(real));
    std::uint16_t port = 0;
    (void)read_port_number(text, port);
    const int address = read_address(text);
    if (address >= 0 && address <= static_cast<int>(highest_slot))
        require(is_number && number == static_cast<unsigned>(address));
    else
        require(address == invalid_address || text == (address == int{all_modules} ? "*" : "_"));
    return 0;
}
