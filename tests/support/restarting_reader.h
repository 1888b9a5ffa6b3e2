/// Reads one entry of a configuration file the way the format is defined: from the beginning of the
/// file for each lookup. Slow, and for that reason plain: what faster readers are compared with.
#pragma once

#include <optional>
#include <string>
#include <string_view>

inline std::optional<std::string>
read_entry_from_start(std::string_view file, const std::string& section, const std::string& key)
{
    const std::string header = '[' + section + ']';
    const std::string begin = key + '=';
    if (file.starts_with("\xEF\xBB\xBF"))
        file.remove_prefix(3);
    bool inside = false;
    while (!file.empty()) {
        std::size_t length = 0;
        while (length < file.size() && file[length] != '\n' && file[length] != '\r')
            ++length;
        const std::string_view line = file.substr(0, length);
        file.remove_prefix(length < file.size() ? length + 1 : length);
        if (!inside) {
            inside = line.starts_with(header);
        } else if (line.starts_with('[')) {
            return std::nullopt;
        } else if (line.starts_with(begin)) {
            const std::string_view value = line.substr(begin.size(), 1023);
            return std::string{value.substr(0, value.find('\0'))};
        }
    }
    return std::nullopt;
}
