#include "companion/report/reading/facts.h"
#include "frame/text/format.h"
#include "instrument/module_hardware.h"
#include "instrument/supply_output.h"
#include "protocol/report/series.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace companion
{

namespace
{

/// Facts of one report that are looked up one behind the other: the search begins where the last
/// one ended, and goes both ways.
class Lookup
{
public:
    explicit Lookup(const Report& report) : report_{report} {}

    /// Null when it is not there or has no number.
    const Fact* number(std::string_view key)
    {
        const std::size_t count = report_.facts.size();
        const auto is_at = [&](std::size_t at) { return report_.facts[at].key == key; };
        for (std::size_t away = 0; away < count; ++away) {
            if (next_ + away < count && is_at(next_ + away))
                next_ += away;
            else if (away <= next_ && is_at(next_ - away))
                next_ -= away;
            else
                continue;
            const Fact& fact = report_.facts[next_];
            return fact.value ? &fact : nullptr;
        }
        return nullptr;
    }

private:
    const Report& report_;
    std::size_t next_ = 0;
};

Fact derived(std::string key, const Fact& from, double value, std::string_view unit)
{
    Fact fact;
    fact.key = std::move(key);
    fact.value = value;
    fact.unit = unit;
    fact.line = from.line;
    return fact;
}

/// The same series, seen from another zero.
Fact shifted(std::string key, const Fact& from, double zero)
{
    Fact fact = derived(std::move(key), from, *from.value - zero, from.unit);
    fact.spread = from.spread;
    fact.samples = from.samples;
    return fact;
}

// ---- The heater ----

struct LimitedQuantity {
    const char* measured; ///< behind the key of a run
    const char* limit;    ///< where the run does not have its own
    const char* run;      ///< that has its own limit of it
};
constexpr LimitedQuantity limited_quantities[] = {
    {"heater-voltage", "slot0/heater/voltage-limit", heater_runs[0]},
    {"current", "slot0/heater/current-limit", heater_runs[1]},
    {"power", "slot0/heater/power-limit", heater_runs[2]},
};

class HeaterRuns
{
public:
    HeaterRuns(const Report& report, std::vector<Fact>& added) : facts_{report}, added_{added} {}

    void add_all()
    {
        if (const Fact* cold = facts_.number("slot0/heater/off/heater-temperature"))
            before_ = *cold->value;
        for (const char* run : heater_runs)
            add_run(run);
        if (largest_resistance_ > 0 && first_ != nullptr)
            added_.push_back(derived("slot0/heater/resistance-spread", *first_,
                                     (largest_resistance_ / smallest_resistance_ - 1) * 100, "%"));
    }

private:
    void add_run(const char* run)
    {
        const std::string key = std::string{"slot0/heater/"} + run + '/';
        const Fact* volts = facts_.number(key + "heater-voltage");
        const Fact* amperes = facts_.number(key + "current");
        const Fact* watts = facts_.number(key + "power");
        const Fact* temperature = facts_.number(key + "heater-temperature");
        if (volts == nullptr || amperes == nullptr || watts == nullptr)
            return;
        first_ = first_ == nullptr ? volts : first_;
        add_limit_error(run, key);
        Fact error = derived(key + "power-error", *watts,
                             *watts->value - *volts->value * *amperes->value, "W");
        error.references[0] = {"power", *watts->value};
        added_.push_back(std::move(error));
        const double resistance = *volts->value / *amperes->value;
        added_.push_back(derived(key + "resistance", *volts, resistance, "Ohm"));
        largest_resistance_ = std::max(largest_resistance_, resistance);
        smallest_resistance_ = std::min(smallest_resistance_, resistance);
        if (temperature != nullptr)
            add_temperature(key, *temperature);
    }

    /// Which limit a run reaches first depends on the resistance of the heater: what limits is
    /// what comes nearest to its limit.
    void add_limit_error(std::string_view run, const std::string& key)
    {
        const Fact *measured = nullptr, *limit = nullptr;
        double nearest = 0;
        for (const LimitedQuantity& quantity : limited_quantities) {
            const Fact* amount = facts_.number(key + quantity.measured);
            const Fact* its_limit =
                facts_.number(run == quantity.run ? key + "limit" : quantity.limit);
            if (amount == nullptr || its_limit == nullptr)
                continue;
            const double part = *amount->value / *its_limit->value;
            if (measured != nullptr && !(part > nearest))
                continue;
            measured = amount;
            limit = its_limit;
            nearest = part;
        }
        if (measured == nullptr)
            return;
        Fact error = shifted(key + "limit-error", *measured, *limit->value);
        error.references[0] = {"limit", *limit->value};
        added_.push_back(std::move(error));
    }

    void add_temperature(const std::string& key, const Fact& temperature)
    {
        const Spread& spread = *temperature.spread;
        added_.push_back(
            derived(key + "warming", temperature, *temperature.value - before_, temperature.unit));
        added_.push_back(derived(key + "temperature-span", temperature, spread.above + spread.below,
                                 temperature.unit));
        before_ = *temperature.value;
    }

    Lookup facts_;
    std::vector<Fact>& added_;
    const Fact* first_ = nullptr;
    double before_ = std::nan("");
    double largest_resistance_ = 0;
    double smallest_resistance_ = std::numeric_limits<double>::infinity();
};

// ---- The outputs ----

/// One target of an output.
struct Target {
    unsigned set;
    const Fact *get, *measured, *current;
};

/// Where current flows through a load: the straight line through the points of a series.
struct Line {
    double slope = 0, offset = 0;
};

Line line_through(const std::vector<Target>& targets)
{
    double volts = 0, amperes = 0, squares = 0, products = 0;
    const auto count = static_cast<double>(targets.size());
    for (const Target& target : targets) {
        volts += *target.measured->value / count;
        amperes += *target.current->value / count;
    }
    for (const Target& target : targets) {
        const double difference = *target.measured->value - volts;
        squares += difference * difference;
        products += difference * (*target.current->value - amperes);
    }
    const double slope = products / squares;
    return {slope, amperes - slope * volts};
}

double span_of_volts(const std::vector<Target>& targets)
{
    const auto [lowest, highest] =
        std::minmax_element(targets.begin(), targets.end(), [](const Target& a, const Target& b) {
            return *a.measured->value < *b.measured->value;
        });
    return *highest->measured->value - *lowest->measured->value;
}

/// Between neighbours: where the current range ends, the line through all would tell too little.
double steepest_slope(const std::vector<Target>& targets)
{
    double steepest = 0;
    for (std::size_t i = 1; i < targets.size(); ++i) {
        const double volts = *targets[i].measured->value - *targets[i - 1].measured->value;
        const double amperes = *targets[i].current->value - *targets[i - 1].current->value;
        if (volts != 0)
            steepest = std::max(steepest, amperes / volts);
    }
    return steepest;
}

class Outputs
{
public:
    Outputs(const Report& report, std::vector<Fact>& added) : facts_{report}, added_{added} {}

    void add_slot(unsigned slot, std::uint32_t hardware_type)
    {
        using namespace hv_supply_hardware;
        const bool is_bipolar = bipolar_outputs.of(hardware_type) != 0;
        const bool is_positive = unipolar_outputs.of(hardware_type) != 0;
        range_ = voltage_range.of(hardware_type);
        for (const bool negative : {false, true}) {
            const MeasurementRanges ranges = {.negative = negative, .high = 0};
            key_ = formatted("slot%u/output/%s/", slot, ranges.polarity());
            const bool delivers = is_bipolar || is_positive != negative;
            add_polarity(!delivers ? 0.0 : negative ? -1.0 : 1.0);
        }
    }

private:
    void add_polarity(double sign)
    {
        std::vector<Target> targets;
        const TargetSteps steps{range_};
        for (unsigned number = 1; number <= steps.count; ++number) {
            const unsigned volts = number * steps.step;
            const std::string key = key_ + std::to_string(volts) + "V/";
            const Target target{volts, facts_.number(key + "get"), facts_.number(key + "measured"),
                                facts_.number(key + "current")};
            if (target.get == nullptr || target.measured == nullptr || target.current == nullptr)
                return;
            targets.push_back(target);
        }
        if (targets.empty())
            return;
        double before = 0;
        for (const Target& target : targets) {
            add_target(target, sign);
            if (sign != 0.0)
                add("increase", target,
                    (*target.measured->value - before) * sign / static_cast<double>(steps.step) *
                        100,
                    "%");
            before = *target.measured->value;
        }
        if (sign != 0.0)
            add_load(targets);
    }

    void add_target(const Target& target, double sign)
    {
        const double volts = target.set;
        Fact error = shifted(name("error", target), *target.measured, sign * volts);
        error.references = {{{"range", static_cast<double>(range_)}, {"target", volts}}};
        added_.push_back(std::move(error));
        add("read-back-error", target, *target.get->value - volts, "V");
    }

    void add_load(const std::vector<Target>& targets)
    {
        if (!(span_of_volts(targets) > 0)) // an output that does not move tells nothing of its load
            return;
        constexpr double gigaohm_of_picoampere = 1e3; // V / pA is TOhm
        added_.push_back(derived(key_ + "load", *targets.front().current,
                                 gigaohm_of_picoampere / steepest_slope(targets), "GOhm"));
        const Line line = line_through(targets);
        const double full = std::abs(line.slope) * range_;
        for (const Target& target : targets) {
            const double expected = line.offset + line.slope * *target.measured->value;
            Fact error = shifted(name("current-error", target), *target.current, expected);
            error.references[0] = {"full", full};
            added_.push_back(std::move(error));
        }
    }

    [[nodiscard]] std::string name(const char* what, const Target& target) const
    {
        return key_ + std::to_string(target.set) + "V/" + what;
    }
    void add(const char* what, const Target& target, double value, std::string_view unit)
    {
        added_.push_back(derived(name(what, target), *target.measured, value, unit));
    }

    Lookup facts_;
    std::vector<Fact>& added_;
    std::string key_;
    unsigned range_ = 0;
};

void add_fan_error(const Report& report, std::vector<Fact>& added)
{
    Lookup facts{report};
    const Fact* set = facts.number("controller/fan/speed-set");
    const Fact* measured = facts.number("controller/fan/measured");
    if (set == nullptr || measured == nullptr)
        return;
    Fact error = shifted("controller/fan/speed-error", *measured, *set->value);
    error.references[0] = {"target", *set->value};
    added.push_back(std::move(error));
}

} // namespace

void add_derived_facts(Report& report)
{
    std::vector<Fact> added;
    add_fan_error(report, added);
    HeaterRuns{report, added}.add_all();
    Outputs outputs{report, added};
    Lookup facts{report};
    for (unsigned slot = 1; slot <= highest_slot; ++slot) {
        const Fact* type = facts.number(formatted("slot%u/hardware-type", slot));
        if (type != nullptr)
            outputs.add_slot(slot, static_cast<std::uint32_t>(*type->value));
    }
    report.facts.insert(report.facts.end(), std::make_move_iterator(added.begin()),
                        std::make_move_iterator(added.end()));
}

} // namespace companion
