#include "companion/report/units.h"

#include "protocol/report/report.h"

#include <algorithm>
#include <iterator>

namespace companion
{

namespace
{

struct UnitPrefix {
    char letter;
    double factor;
};
constexpr UnitPrefix unit_prefixes[] = {{'p', 1e-12}, {'n', 1e-9}, {'u', 1e-6}, {'m', 1e-3},
                                        {'k', 1e3},   {'M', 1e6},  {'G', 1e9}};
constexpr std::string_view base_units[] = {"V", "A", "W", "Ohm", "s", "Hz"};
constexpr std::string_view other_units[] = {"%", "rpm", "degC", "bytes", "baud", "KiB"};

struct KnownUnit {
    std::string_view base;
    double factor = 1;
};

std::optional<KnownUnit> known_unit(std::string_view unit)
{
    if (unit == DEGREES_C_IN_FILE)
        unit = "degC";
    if (const auto found = std::find(std::begin(other_units), std::end(other_units), unit);
        found != std::end(other_units))
        return KnownUnit{*found};
    for (const std::string_view base : base_units) {
        if (unit == base)
            return KnownUnit{base};
        if (unit.size() != base.size() + 1 || !unit.ends_with(base))
            continue;
        for (const UnitPrefix& prefix : unit_prefixes) {
            if (prefix.letter == unit.front())
                return KnownUnit{base, prefix.factor};
        }
    }
    return std::nullopt;
}

} // namespace

bool is_unit(std::string_view text)
{
    return known_unit(text).has_value();
}

std::optional<double> unit_ratio(std::string_view from, std::string_view to)
{
    if (from == to)
        return 1.0;
    const std::optional<KnownUnit> one = known_unit(from);
    const std::optional<KnownUnit> other = known_unit(to);
    if (!one || !other || one->base != other->base)
        return std::nullopt;
    return one->factor / other->factor;
}

} // namespace companion
