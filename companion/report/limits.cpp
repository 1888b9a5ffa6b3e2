#include "companion/report/limits.h"

#include "companion/report/shapes.h"
#include "companion/report/units.h"
#include "companion/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>

namespace companion
{

bool fits_pattern(std::string_view key, std::string_view pattern)
{
    const std::size_t plain = std::min(pattern.find('*'), pattern.size());
    if (!key.starts_with(pattern.substr(0, plain)))
        return false;
    key.remove_prefix(plain);
    pattern.remove_prefix(plain);
    if (pattern.empty())
        return key.empty();
    const bool crosses = pattern.starts_with("**");
    pattern.remove_prefix(std::min(pattern.find_first_not_of('*'), pattern.size()));
    if (pattern.empty() && crosses)
        return true;
    for (;;) {
        if (fits_pattern(key, pattern))
            return true;
        if (key.empty() || (key.front() == '/' && !crosses))
            return false;
        key.remove_prefix(1);
    }
}

// ---- Reading ----

namespace
{

/// The words of one line; a text in double quotes is one. What is wrong is told with the word.
class Words
{
public:
    explicit Words(std::string_view line)
    {
        while (!line.empty() && line.front() != '#') {
            if (line.front() == ' ') {
                line.remove_prefix(1);
                continue;
            }
            const bool quoted = line.front() == '"';
            if (quoted)
                line.remove_prefix(1);
            const std::size_t end = line.find_first_of(quoted ? "\"" : " #");
            words_.emplace_back(line.substr(0, end));
            open_quote_ = quoted && end == std::string_view::npos;
            line.remove_prefix(std::min(end, line.size()));
            if (quoted && !line.empty())
                line.remove_prefix(1);
        }
    }

    [[nodiscard]] bool has_open_quote() const { return open_quote_; }
    [[nodiscard]] bool is_over() const { return next_ == words_.size(); }
    /// The next word, empty when there is none.
    [[nodiscard]] std::string_view peek() const
    {
        return is_over() ? std::string_view{} : std::string_view{words_[next_]};
    }
    std::string take() { return is_over() ? std::string{} : words_[next_++]; }
    bool take_if(std::string_view word)
    {
        const bool is_next = !is_over() && words_[next_] == word;
        next_ += is_next ? 1 : 0;
        return is_next;
    }

    [[nodiscard]] std::string joined() const
    {
        std::string text;
        for (std::size_t i = next_; i < words_.size(); ++i)
            text += (text.empty() ? "" : " ") + words_[i];
        return text;
    }

    /// Why the next word is wrong.
    [[nodiscard]] std::string wrong(std::string_view wanted) const
    {
        return is_over() ? "the line ends where " + std::string{wanted} + " is expected"
                         : '"' + words_[next_] + "\" is not " + std::string{wanted};
    }

private:
    std::vector<std::string> words_;
    std::size_t next_ = 0;
    bool open_quote_ = false;
};

std::optional<double> number_of(std::string_view text)
{
    const std::optional<double> value = take_number(text);
    return value && text.empty() && std::isfinite(*value) ? value : std::nullopt;
}

/// Empty when all is well, else what is wrong.
using Complaint = std::string;

Complaint read_unit(Words& words, std::string& unit)
{
    if (!is_unit(words.peek()))
        return words.wrong("a unit (V, mV, A, pA, W, Ohm, s, ms, Hz, degC, rpm, %)");
    unit = words.take();
    return {};
}

Complaint read_term(Words& words, std::string_view number, std::string_view given_word, Term& term)
{
    const std::optional<double> amount = number_of(number);
    if (!amount || *amount < 0)
        return '"' + std::string{given_word} + "\" is not a tolerance";
    term.amount = *amount;
    if (Complaint complaint = read_unit(words, term.unit); !complaint.empty())
        return complaint;
    if (!words.take_if("of"))
        return {};
    constexpr std::string_view references[] = {"range", "target", "limit", "power", "full"};
    if (term.unit != "%" || std::find(std::begin(references), std::end(references), words.peek()) ==
                                std::end(references))
        return words.wrong("what per cent can refer to (range, target, limit, power, full)");
    term.reference = words.take();
    return {};
}

Complaint read_tolerances(Words& words, Limit& limit)
{
    while (words.peek().starts_with("+-")) {
        const std::string word = words.take();
        Term& term = limit.tolerance.emplace_back();
        if (Complaint complaint = read_term(words, std::string_view{word}.substr(2), word, term);
            !complaint.empty())
            return complaint;
    }
    if (words.take_if("noise")) {
        const std::string word = words.take();
        if (Complaint complaint = read_term(words, word, word, limit.noise.emplace());
            !complaint.empty())
            return complaint;
    }
    return words.is_over() ? Complaint{}
                           : words.wrong("a tolerance (+-2 %) or the end of the line");
}

Complaint read_range(Words& words, Limit& limit)
{
    const std::string word = words.take();
    const std::size_t dots = word.find("..");
    const std::string_view low = std::string_view{word}.substr(0, dots);
    const std::string_view high = std::string_view{word}.substr(dots + 2);
    limit.low = number_of(low);
    limit.high = number_of(high);
    const bool is_range =
        (low.empty() || limit.low) && (high.empty() || limit.high) && (limit.low || limit.high);
    if (!is_range || (limit.low && limit.high && *limit.low > *limit.high))
        return '"' + word + "\" is not a range (10..40, 5.., ..50)";
    return words.is_over() ? Complaint{} : read_unit(words, limit.unit);
}

Complaint read_rule(Words& words, Limit& limit)
{
    limit.pattern = words.take();
    limit.rule = words.joined();
    if (words.take_if("is")) {
        if (words.is_over())
            return words.wrong("a word");
        while (!words.is_over())
            limit.words.push_back(words.take());
        return {};
    }
    if (words.peek().find("..") != std::string_view::npos) {
        Complaint complaint = read_range(words, limit);
        return complaint.empty() ? read_tolerances(words, limit) : complaint;
    }
    if (!words.peek().starts_with("+-")) {
        const std::optional<double> nominal = number_of(words.peek());
        if (!nominal)
            return words.wrong("a limit (24.0 V +-2 %, 10..40 degC, is OK)");
        limit.nominal = *nominal;
        words.take();
        if (Complaint complaint = read_unit(words, limit.unit); !complaint.empty())
            return complaint;
    }
    if (!words.peek().starts_with("+-"))
        return words.wrong("a tolerance (+-2 %)");
    return read_tolerances(words, limit);
}

Complaint read_expectation(Words& words, Expectation& expected)
{
    constexpr std::string_view units[] = {"base", "slot0", "slot1", "slot2", "slot3"};
    constexpr std::string_view types[] = {"KOVCT-BASE", "HTCTRL", "HVPS"};
    if (std::find(std::begin(units), std::end(units), words.peek()) == std::end(units))
        return words.wrong("a unit (base, slot0, slot1, slot2, slot3)");
    expected.unit = words.take();
    if (std::find(std::begin(types), std::end(types), words.peek()) == std::end(types))
        return words.wrong("a device type (KOVCT-BASE, HTCTRL, HVPS)");
    expected.type = words.take();
    return words.is_over() ? Complaint{} : words.wrong("the end of the line");
}

bool is_date(std::string_view text)
{
    constexpr std::string_view form = "0000-00-00";
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        if (form[i] == '-' ? text[i] != '-' : text[i] < '0' || text[i] > '9')
            return false;
    }
    const auto number = [&](std::size_t at, std::size_t count) {
        return static_cast<int>(number_of(text.substr(at, count)).value_or(0));
    };
    const std::chrono::year_month_day date{std::chrono::year{number(0, 4)},
                                           std::chrono::month{static_cast<unsigned>(number(5, 2))},
                                           std::chrono::day{static_cast<unsigned>(number(8, 2))}};
    return date.ok();
}

Complaint read_waiver(Words& words, Waiver& waiver)
{
    waiver.pattern = words.take();
    if (waiver.pattern.empty() || !words.take_if("until"))
        return words.wrong("\"until\" behind a key");
    if (!is_date(words.peek()))
        return words.wrong("a day (2027-06-30)");
    waiver.until = words.take();
    if (words.is_over())
        return words.wrong("a reason");
    waiver.reason = words.take();
    return words.is_over() ? Complaint{} : words.wrong("the end of the line");
}

Complaint read_line(Words& words, int line, const std::string& reason, Limits& limits)
{
    if (words.has_open_quote())
        return "a quotation mark is missing";
    if (words.take_if("expect"))
        return read_expectation(words, limits.expectations.emplace_back(Expectation{"", "", line}));
    if (words.take_if("waive"))
        return read_waiver(words, limits.waivers.emplace_back(Waiver{"", "", "", line}));
    Limit& limit = limits.rules.emplace_back();
    limit.reason = reason;
    limit.line = line;
    return read_rule(words, limit);
}

Complaint read_whole_line(const std::string& line, int number, const std::string& reason,
                          Limits& limits)
{
    const auto is_control = [](unsigned char c) { return c < ' ' || c == 0x7F; };
    if (std::any_of(line.begin(), line.end(), is_control))
        return "a control character";
    const std::string sound = valid_utf8(line);
    Words words{sound};
    if (words.is_over() && !words.has_open_quote())
        return {};
    return read_line(words, number, reason, limits);
}

/// The comment above a group of rules: their reason.
struct Reason {
    std::string text;
    bool is_used = false; ///< by a rule

    void take(const std::string& line)
    {
        if (line.empty() || (is_used && line.starts_with('#')))
            text.clear();
        if (line.starts_with("# "))
            text += (text.empty() ? "" : " ") + line.substr(2);
        is_used = !line.starts_with('#');
    }
};

} // namespace

bool read_limits(std::string text, Limits& limits, std::string& problem)
{
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF"; // editors may begin files with it
    if (text.starts_with(byte_order_mark))
        text.erase(0, byte_order_mark.size());
    limits.source = std::move(text);
    std::string_view rest = limits.source;
    Reason reason;
    for (int number = 1; !rest.empty(); ++number) {
        const std::size_t end = rest.find('\n');
        std::string line = plain_signs(rest.substr(0, end));
        rest.remove_prefix(std::min(end, rest.size() - 1) + 1);
        if (line.ends_with('\r'))
            line.pop_back();
        std::replace(line.begin(), line.end(), '\t', ' ');
        if (const Complaint complaint = read_whole_line(line, number, reason.text, limits);
            !complaint.empty()) {
            problem = std::to_string(number) + ": " + complaint;
            return false;
        }
        reason.take(valid_utf8(line));
    }
    return true;
}

std::vector<OwnPattern> patterns_of_the_user(const Limits& limits)
{
    Limits defaults;
    std::string problem;
    (void)read_limits(default_limits(), defaults, problem);
    std::set<std::string_view> usual;
    for (const Limit& rule : defaults.rules)
        usual.insert(rule.pattern);
    std::vector<OwnPattern> own;
    for (const Limit& rule : limits.rules) {
        if (usual.count(rule.pattern) == 0)
            own.push_back({rule.pattern, false, rule.line});
    }
    for (const Waiver& waiver : limits.waivers)
        own.push_back({waiver.pattern, true, waiver.line});
    return own;
}

const Limit* Limits::find(const Fact& fact) const
{
    const bool is_text = !fact.value && fact.unit.empty();
    const auto [known, is_new] = known_[is_text ? 1 : 0].try_emplace(fact.key, nullptr);
    if (is_new) {
        const auto found = std::find_if(rules.rbegin(), rules.rend(), [&](const Limit& rule) {
            const bool suits = !is_text || !rule.words.empty() || rule.pattern == fact.key;
            return suits && fits_pattern(fact.key, rule.pattern);
        });
        if (found != rules.rend())
            known->second = &*found;
    }
    return known->second;
}

const Waiver* Limits::find_waiver(std::string_view key, std::string_view today) const
{
    const auto found = std::find_if(waivers.begin(), waivers.end(), [&](const Waiver& waiver) {
        return today < waiver.until && fits_pattern(key, waiver.pattern);
    });
    return found != waivers.end() ? &*found : nullptr;
}

} // namespace companion
