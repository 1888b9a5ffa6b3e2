/// The limits that reports are judged by, and the language in which they are written: a rule a
/// line.
///
///     slot*/housekeeping/24V       24.0 V +-2 %           # a band around a nominal value
///     slot*/output/*/*/error       +-0.5 % of range +-1 % of target noise 0.1 % of range
///     */housekeeping/CPU           10..40 degC            # a range; one end may be left out
///     controller/fan/state         is OK                  # a word, or one of several
///     expect slot2 HVPS
///     waive slot1/output/*/*/error until 2027-06-30 "waits for its new divider"
///
/// In a key `*` stands for anything but '/', `**` for anything. Of the rules that fit a fact the
/// last one counts. Comments begin with '#'; those right above a rule are its reason.
#pragma once

#include "companion/report/reading/facts.h"

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace companion
{

/// A part of a tolerance: so many of a unit, or per cent of something.
struct Term {
    double amount;
    std::string unit;      ///< "%" or a unit
    std::string reference; ///< of per cent: "range", ...; empty = of the nominal value
};

struct Limit {
    std::string pattern;
    std::string rule; ///< as it is written behind the key
    std::string reason;
    int line = 0;

    std::vector<std::string> words; ///< when it is one of words
    double nominal = 0;
    std::string unit;            ///< empty = the fact's own
    std::vector<Term> tolerance; ///< when it is a band
    std::optional<double> low, high;
    std::optional<Term> noise; ///< the standard deviation that is allowed
};

/// A pattern that the user wrote and the default limits lack: it may be mistyped.
struct OwnPattern {
    std::string pattern;
    bool is_waiver;
    int line;
};

struct Expectation {
    std::string unit; ///< "slot2"
    std::string type; ///< "HVPS"
    int line;
};

struct Waiver {
    std::string pattern;
    std::string until; ///< "2027-06-30"; it is over on that day
    std::string reason;
    int line;
};

class Limits
{
public:
    Limits() = default;
    Limits(Limits&&) = default; // what is known points to the rules, which stay where they are
    Limits(const Limits&) = delete;
    Limits& operator=(const Limits&) = delete;
    ~Limits() = default;

    std::string source; ///< the text that they were read from
    std::vector<Limit> rules;
    std::vector<Expectation> expectations;
    std::vector<Waiver> waivers;
    std::vector<OwnPattern> own_patterns; ///< none when there is no file

    /// The limit of a fact; null when there is none. A band is for numbers, and for a text only
    /// where a number is due ("off") or its whole key is named.
    [[nodiscard]] const Limit* find(const Fact& fact) const;
    [[nodiscard]] const Waiver* find_waiver(std::string_view key, std::string_view today) const;

private:
    /// Reports have equal keys. The first ones are of numbers, the others of texts.
    mutable std::array<std::unordered_map<std::string, const Limit*>, 2> known_;
};

/// Reads limits; false with a message that names line and word when one is wrong.
[[nodiscard]] bool read_limits(std::string text, Limits& limits, std::string& problem);

/// The text of the limits that hold when there is no file.
[[nodiscard]] std::string default_limits();

/// The patterns of a user's limits that are worth a note when they fit nothing.
[[nodiscard]] std::vector<OwnPattern> patterns_of_the_user(const Limits& limits);

/// `*` = anything but '/', `**` = anything.
[[nodiscard]] bool fits_pattern(std::string_view key, std::string_view pattern);

} // namespace companion
