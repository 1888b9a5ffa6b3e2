#include "frame/platform/windows/arguments.h"

#include <algorithm>

namespace
{

constexpr std::wstring_view blanks = L" \t";

/// The program's name, in which backslashes mean nothing.
std::wstring take_name(std::wstring_view& line)
{
    const bool quoted = line.starts_with(L'"');
    if (quoted)
        line.remove_prefix(1);
    const std::size_t length = quoted ? line.find(L'"') : line.find_first_of(blanks);
    std::wstring name{line.substr(0, length)};
    line.remove_prefix(std::min(name.size() + (quoted ? 1 : 0), line.size()));
    return name;
}

std::wstring take_argument(std::wstring_view& line)
{
    std::wstring argument;
    bool quoted = false;
    while (!line.empty() && (quoted || blanks.find(line.front()) == blanks.npos)) {
        const std::size_t backslashes = std::min(line.find_first_not_of(L'\\'), line.size());
        line.remove_prefix(backslashes);
        const bool before_quote = line.starts_with(L'"');
        argument.append(before_quote ? backslashes / 2 : backslashes, L'\\');
        if (!before_quote) {
            if (backslashes == 0) {
                argument += line.front();
                line.remove_prefix(1);
            }
            continue;
        }
        line.remove_prefix(1);
        const bool doubled = quoted && line.starts_with(L'"');
        if (backslashes % 2 != 0) {
            argument += L'"';
        } else if (doubled) {
            argument += L'"';
            line.remove_prefix(1);
        } else {
            quoted = !quoted;
        }
    }
    return argument;
}

} // namespace

std::vector<std::wstring> split_command_line(std::wstring_view line)
{
    std::vector<std::wstring> arguments = {take_name(line)};
    for (;;) {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        if (line.empty())
            return arguments;
        arguments.push_back(take_argument(line));
    }
}
