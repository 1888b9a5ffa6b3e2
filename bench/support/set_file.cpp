#include "bench/support/set_file.h"

#include "config/file_format.h"

#include <cstdint>

namespace bench
{

std::string file_of_sets(unsigned count)
{
    std::string file;
    ConfigRecord record = {};
    for (unsigned number = 1; number <= count; ++number) {
        record.bytes[4] = static_cast<std::uint8_t>(number);
        file += set_section_text(number, "set " + std::to_string(number), record) + '\n';
    }
    return file;
}

} // namespace bench
