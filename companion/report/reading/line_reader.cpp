#include "companion/report/reading/line_reader.h"

#include "protocol/report/report_texts.h"

#include <algorithm>
#include <cctype>

namespace companion
{

namespace
{

constexpr std::size_t longest_quote = 60;

/// A line as a problem quotes it.
std::string quoted(std::string_view line)
{
    while (line.starts_with('\t'))
        line.remove_prefix(1);
    std::string text{line.substr(0, longest_quote)};
    std::replace(text.begin(), text.end(), '\t', ' ');
    return line.empty() ? "an empty line"
                        : '"' + text + (line.size() > longest_quote ? "...\"" : "\"");
}

bool is_printable(std::string_view line)
{
    return std::all_of(line.begin(), line.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte == '\t' || (byte >= ' ' && byte < 0x7F) || byte >= 0xA0;
    });
}

bool is_small_letter(char c)
{
    return c >= 'a' && c <= 'z';
}

} // namespace

std::string key_of_label(std::string_view label)
{
    std::string key;
    key.reserve(label.size());
    while (!label.empty()) {
        const std::size_t length = std::min(label.find_first_of(" #+"), label.size());
        const std::string_view word = label.substr(0, length);
        const bool is_word = std::any_of(word.begin(), word.end(), is_small_letter);
        if (!key.empty() && word.find_first_not_of('\'') != std::string_view::npos)
            key += '-';
        for (const char c : word) {
            if (c != '\'')
                key += is_word && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        label.remove_prefix(std::min(length + 1, label.size()));
    }
    return key;
}

LineReader::LineReader(Report& report) : report_{report}
{
    std::string_view rest = report.bytes;
    lines_.reserve(rest.size() / 40);
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        ends_whole_ = end != std::string_view::npos;
        std::string_view line = rest.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        lines_.push_back(line);
        rest.remove_prefix(ends_whole_ ? end + 1 : rest.size());
    }
    if (!ends_whole_ && !lines_.empty())
        lines_.pop_back(); // it was cut off somewhere
}

void LineReader::problem(std::string text)
{
    report_.problems.push_back({static_cast<int>(next_), std::move(text)});
}

template <class Matches>
const std::string_view* LineReader::take(const Beginning& expected, const Matches& matches)
{
    if (stopped_)
        return nullptr;
    if (next_ < lines_.size() && matches(lines_[next_])) {
        missing_ = 0;
        return &lines_[next_++];
    }
    return take_behind_mismatch(expected, matches);
}

const std::string_view*
LineReader::take_behind_mismatch(const Beginning& expected,
                                 const std::function<bool(std::string_view)>& matches)
{
    const std::string awaited =
        quoted(std::string(expected.tabs, '\t').append(expected.text).append(expected.end));
    if (next_ == lines_.size()) {
        stopped_ = true;
        problem("the report ends here, before " + awaited);
        return nullptr;
    }
    const auto aborted = std::find(lines_.begin(), lines_.end(), report_text::aborted);
    if (aborted != lines_.end()) {
        stopped_ = true;
        next_ = cause_of_abort();
        problem("the test was aborted: " + quoted(lines_[next_ - 1]));
        return nullptr;
    }
    if (next_ + 1 < lines_.size() && matches(lines_[next_ + 1])) {
        ++next_;
        const bool is_double = next_ > 1 && lines_[next_ - 1] == lines_[next_ - 2];
        problem((is_double ? "this line occurs twice: " : "unexpected line: ") +
                quoted(lines_[next_ - 1]));
        return &lines_[next_++];
    }
    constexpr int most_missing = 3;
    stopped_ = ++missing_ > most_missing;
    ++next_;
    problem(awaited + " is missing, " + quoted(lines_[next_ - 1]) + " stands here");
    --next_;
    return nullptr;
}

std::size_t LineReader::cause_of_abort() const
{
    const auto told = std::find_if(lines_.begin(), lines_.end(), [](std::string_view line) {
        return line.starts_with(report_text::first_error);
    });
    if (told != lines_.end())
        return static_cast<std::size_t>(told - lines_.begin()) + 1;
    std::size_t next = next_;
    while (next + 1 < lines_.size() && lines_[next].empty())
        ++next;
    return next + 1;
}

bool LineReader::line(std::string_view text, int deeper)
{
    const Beginning whole = text.empty() ? Beginning{} : beginning(text, deeper);
    return take(whole, [&whole](std::string_view found) {
               return found.size() == whole.size() && whole.is_of(found);
           }) != nullptr;
}

void LineReader::heading(std::string_view text)
{
    blank();
    line(text);
}

bool LineReader::is_next(std::string_view text) const
{
    return !stopped_ && next_ < lines_.size() && beginning(text, 0).is_of(lines_[next_]);
}

Fact& LineReader::add(std::string_view key, std::string_view text)
{
    Fact& fact = report_.facts.emplace_back();
    fact.key.reserve(prefix.size() + key.size());
    fact.key += prefix;
    fact.key += key;
    fact.text = text;
    fact.line = line_number();
    return fact;
}

Fact* LineReader::parsed(Fact& fact, const Shape& shape)
{
    if (shape.parse(fact.text, shape, fact) && is_printable(fact.text))
        return &fact;
    problem("this cannot be understood: " + quoted(lines_[next_ - 1]));
    return nullptr;
}

Fact* LineReader::value_behind(const Beginning& label, std::string_view key, const Shape& shape)
{
    const std::string_view* found =
        take(label, [&label](std::string_view candidate) { return label.is_of(candidate); });
    return found != nullptr ? parsed(add(key, found->substr(label.size())), shape) : nullptr;
}

Fact* LineReader::begins(std::string_view text, std::string_view key, const Shape& shape,
                         int deeper)
{
    return value_behind(beginning(text, deeper), key, shape);
}

Fact* LineReader::item(std::string_view label, std::string_view key, const Shape& shape, int deeper)
{
    return value_behind(beginning(label, deeper, ":\t"), key, shape);
}

Fact* LineReader::item(std::string_view label, const Shape& shape, int deeper)
{
    return item(label, key_of_label(label), shape, deeper);
}

Fact* LineReader::item_with(std::string_view label, std::string_view key, std::string_view value,
                            int deeper)
{
    Fact* fact = item(label, key, shape::property, deeper);
    if (fact != nullptr && fact->text != value) {
        problem('"' + std::string{fact->text} + "\" contradicts the lines before: it should be \"" +
                std::string{value} + '"');
        return nullptr;
    }
    return fact;
}

Fact* LineReader::word(std::string_view label, std::string_view key,
                       std::initializer_list<std::string_view> words, int deeper)
{
    Fact* fact = item(label, key, shape::text, deeper);
    if (fact != nullptr && std::find(words.begin(), words.end(), fact->text) == words.end()) {
        problem("none of the words that belong here: \"" + std::string{fact->text} + '"');
        return nullptr;
    }
    return fact;
}

Fact* LineReader::choice(std::initializer_list<std::string_view> texts, std::string_view key,
                         int deeper)
{
    const Beginning before = beginning("", deeper);
    const auto is_one = [&](std::string_view candidate) {
        return before.is_of(candidate) && std::find(texts.begin(), texts.end(),
                                                    candidate.substr(before.size())) != texts.end();
    };
    const std::string_view* found = take(beginning(*texts.begin(), deeper), is_one);
    return found != nullptr ? &add(key, found->substr(before.size())) : nullptr;
}

std::vector<std::string_view> LineReader::row(std::string_view first, std::size_t cells)
{
    const Beginning cell = beginning(first, 0, "\t");
    const std::string_view* found =
        take(cell, [&cell](std::string_view candidate) { return cell.is_of(candidate); });
    if (found == nullptr)
        return {};
    std::vector<std::string_view> parts;
    parts.reserve(cells);
    std::string_view rest = found->substr(static_cast<std::size_t>(indent));
    for (;;) {
        const std::size_t end = rest.find('\t');
        parts.push_back(rest.substr(0, end));
        if (end == std::string_view::npos)
            break;
        rest.remove_prefix(end + 1);
    }
    if (parts.size() != cells) {
        problem("this row has not " + std::to_string(cells) + " columns: " + quoted(*found));
        return {};
    }
    return parts;
}

void LineReader::end()
{
    if (stopped_ || next_ == lines_.size()) {
        if (!stopped_ && !ends_whole_)
            problem("the last line is cut off");
        return;
    }
    ++next_;
    problem("nothing should follow, but " + quoted(lines_[next_ - 1]) + " stands here");
}

} // namespace companion
