/// Reads the lines of a report one by one as they are expected, and notes what differs.
#pragma once

#include "companion/report/shapes.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace companion
{

class LineReader
{
public:
    /// Facts and problems go to the report, whose bytes the lines are.
    explicit LineReader(Report& report);

    // ---- Where the next lines belong ----

    int indent = 0;     ///< tabs before them
    std::string prefix; ///< of the keys of their facts, with the '/' at its end

    // ---- Lines that must come now ----

    /// An empty line.
    void blank() { line("", 0); }
    /// This text. False when it is not there.
    bool line(std::string_view text, int deeper = 0);
    /// An empty line and this text.
    void heading(std::string_view text);
    /// A line that begins so, and what stands behind.
    Fact* begins(std::string_view text, std::string_view key, const Shape& shape, int deeper = 0);
    /// "label:<tab>value". Null when it is not there, or its value not what it should be.
    Fact* item(std::string_view label, std::string_view key, const Shape& shape, int deeper = 0);
    /// The same with a key made of the label.
    Fact* item(std::string_view label, const Shape& shape, int deeper = 0);
    /// The same where the value is known already.
    Fact* item_with(std::string_view label, std::string_view key, std::string_view value,
                    int deeper = 0);
    /// The same where the value is one of these words.
    Fact* word(std::string_view label, std::string_view key,
               std::initializer_list<std::string_view> words, int deeper = 0);
    /// One of these texts, as a fact.
    Fact* choice(std::initializer_list<std::string_view> texts, std::string_view key,
                 int deeper = 0);
    /// The cells of a row of a table; nothing when it is not there.
    [[nodiscard]] std::vector<std::string_view> row(std::string_view first, std::size_t cells);

    // ---- Looking ----

    /// The next line begins so.
    [[nodiscard]] bool is_next(std::string_view text) const;
    /// The number of the line that was taken last.
    [[nodiscard]] int line_number() const { return static_cast<int>(next_); }
    /// Nothing more comes, or reading was given up.
    [[nodiscard]] bool has_stopped() const { return stopped_; }
    /// Nothing must come any more.
    void end();

    /// Adds a fact on the line that was taken last.
    Fact& add(std::string_view key, std::string_view text);
    void problem(std::string text);

private:
    /// Tabs and a text, of a label with what ends one.
    struct Beginning {
        std::size_t tabs = 0;
        std::string_view text = {}, end = {};

        [[nodiscard]] std::size_t size() const { return tabs + text.size() + end.size(); }
        [[nodiscard]] bool is_of(std::string_view line) const
        {
            if (line.size() < size() || line.substr(0, tabs).find_first_not_of('\t') < tabs)
                return false;
            line.remove_prefix(tabs);
            return line.starts_with(text) && line.substr(text.size()).starts_with(end);
        }
    };
    [[nodiscard]] Beginning beginning(std::string_view text, int deeper,
                                      std::string_view end = {}) const
    {
        return {static_cast<std::size_t>(indent + deeper), text, end};
    }

    /// Takes the line for which `matches` holds; null when it is missing.
    template <class Matches>
    const std::string_view* take(const Beginning& expected, const Matches& matches);
    const std::string_view*
    take_behind_mismatch(const Beginning& expected,
                         const std::function<bool(std::string_view)>& matches);
    Fact* value_behind(const Beginning& label, std::string_view key, const Shape& shape);
    /// The number of the line that tells why the test was aborted.
    [[nodiscard]] std::size_t cause_of_abort() const;
    Fact* parsed(Fact& fact, const Shape& shape);

    Report& report_;
    std::vector<std::string_view> lines_;
    std::size_t next_ = 0;
    bool ends_whole_ = false; ///< a line end stands behind the last line
    bool stopped_ = false;
    int missing_ = 0; ///< in a row
};

/// The part of a key that a label makes: "Product number" is "product-number"; words without small
/// letters stay as they are ("24V", "CPU"), '+' goes.
[[nodiscard]] std::string key_of_label(std::string_view label);

} // namespace companion
