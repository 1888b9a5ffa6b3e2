// Any bytes as a configuration file and as an escaped name. The file is read in pieces, whose size
// is the first byte, and every lookup is compared with a reader that starts at the beginning.

#include "config/file_format.h"
#include "tests/fuzz/target.h"
#include "tests/support/restarting_reader.h"

namespace
{

ConfigFileIndex index_of(std::string_view file, std::size_t piece)
{
    ConfigFileIndex index;
    while (!file.empty()) {
        index.add(file.substr(0, piece));
        file.remove_prefix(piece < file.size() ? piece : file.size());
    }
    index.finish();
    return index;
}

void check_lookup(const ConfigFileIndex& index, std::string_view file, unsigned number,
                  const char* key)
{
    const std::optional<std::string> expected =
        read_entry_from_start(file, section_name(number), key);
    const std::string* found = index.find(number, key);
    require(expected.has_value() == (found != nullptr));
    require(found == nullptr || *found == *expected);
}

/// What could be read is written so that it is read again.
void check_record(const ConfigFileIndex& index, unsigned number)
{
    ConfigRecord record;
    if (read_record(index, number, record) != nullptr)
        return;
    const std::string text = current_section_text(record);
    ConfigRecord again;
    require(read_record(index_of(text, text.size()), current_configuration, again) == nullptr);
    require(current_section_text(again) == text);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view file = as_text(data + 1, size - 1);
    const ConfigFileIndex index = index_of(file, data[0] + std::size_t{1});
    for (const unsigned number : {current_configuration, 1U, 2U, 1023U}) {
        check_lookup(index, file, number, name_key);
        for (const ConfigEntry& entry : config_entries)
            check_lookup(index, file, number, entry.key);
        check_record(index, number);
    }
    require(unescaped_name(file).size() <= file.size());
    require(unescaped_name(escaped_name(file)) == file);
    return 0;
}
