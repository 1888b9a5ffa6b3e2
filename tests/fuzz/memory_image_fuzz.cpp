// Any bytes as a memory image, compared with a reader that takes one character after the other.

#include "diagnostics/memory_image.h"
#include "tests/fuzz/target.h"

#include <cctype>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

bool read_value(std::string_view& text, std::uint8_t& value)
{
    const auto digits = [&text](std::size_t at) {
        return at < text.size() && std::isxdigit(static_cast<unsigned char>(text[at])) != 0;
    };
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text[0])) != 0)
        text.remove_prefix(1);
    if (!digits(0))
        return false;
    const std::size_t count = digits(1) ? 2 : 1;
    value = static_cast<std::uint8_t>(std::stoul(std::string{text.substr(0, count)}, nullptr, 16));
    text.remove_prefix(count);
    return true;
}

bool read_plainly(std::string_view& text, MemoryBlock& block)
{
    for (std::uint8_t& value : block) {
        if (!read_value(text, value))
            return false;
    }
    return true;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int descriptor = memfd_create("image", 0);
    require(ftruncate(descriptor, 0) == 0 &&
            pwrite(descriptor, data, size, 0) == static_cast<ssize_t>(size));
    InputFile file;
    require(file.open(("/proc/self/fd/" + std::to_string(descriptor)).c_str()));
    std::string_view rest = as_text(data, size);
    for (bool good = true; good;) {
        MemoryBlock block = {};
        MemoryBlock expected = {};
        good = read_block(file, block);
        require(good == read_plainly(rest, expected));
        require(!good || block == expected);
    }
    require(file.close());
    return 0;
}
