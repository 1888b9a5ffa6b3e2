/// What a report of the acceptance test says: facts, each with a stable key.
///
///     controller/housekeeping/24V            24.002 V, with the spread of its 20 samples
///     slot1/output/positive/300V/measured    300.000 V
///     slot0/heater/power-limited/power       9.000 W
///
/// Texts are as the report has them, in ISO 8859-1; see companion/text.h.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion
{

/// How a series lies around its mean, in the unit of the mean.
struct Spread {
    double deviation = 0;        ///< standard deviation
    double above = 0, below = 0; ///< largest deviations
};

/// A quantity to which a limit may refer: "+-1 % of target".
struct Reference {
    std::string_view name = {}; ///< "target", "range", "limit"; empty = there is none
    double value = 0;           ///< in the fact's unit
};

struct Fact {
    std::string key;
    std::string_view text; ///< empty when it is computed from others
    std::optional<double> value = {};
    std::string_view unit = {}; ///< also of a number that is not there ("off")
    std::optional<Spread> spread = {};
    std::size_t samples = 0; ///< 0 = told once
    int line = 0;            ///< where it stands, from 1; of the first one when it is computed
    std::array<Reference, 2> references = {};
};

/// Why a report is not whole.
struct Problem {
    int line;
    std::string text;
};

/// A report that was read. Its facts refer to its bytes.
struct Report {
    Report() = default;
    Report(Report&&) = default;
    Report& operator=(Report&&) = default;
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    ~Report() = default;

    std::string name; ///< of the file
    std::string bytes;
    bool is_report = false;    ///< it begins as one
    bool is_simulated = false; ///< one of its units says so
    std::vector<Fact> facts = {};
    /// That it tells of ("controller", "base", "slot0", ...), in their order.
    std::vector<std::string> units = {};
    std::vector<Problem> problems = {}; ///< none = it is whole, and the test was completed

    /// Null when there is none.
    [[nodiscard]] const Fact* find(std::string_view key) const;
    /// Its text, empty when there is none.
    [[nodiscard]] std::string_view text_of(std::string_view key) const;
    /// Its value, nan when there is none.
    [[nodiscard]] double value_of(std::string_view key) const;
    /// The product identification that says that the instrument is simulated; null when none does.
    [[nodiscard]] const Fact* simulated_unit() const;
};

/// The unit to which a key belongs: "slot1" of "slot1/CPU/load".
[[nodiscard]] inline std::string_view unit_of(std::string_view key)
{
    return key.substr(0, key.find('/'));
}

/// Reads a report from its bytes: every line of a whole one, once and in order, as the modules that
/// its own product data name let expect it.
[[nodiscard]] Report read_report(std::string name, std::string bytes);

/// Adds what follows from other facts: errors of outputs, the load, the heater's resistance.
void add_derived_facts(Report& report);

} // namespace companion
