#include "protocol/report/statistics.h"

#include "frame/text/format.h"

#include <algorithm>
#include <cmath>
#include <numeric>

double Statistics::mean() const
{
    if (values_.empty())
        return 0.0;
    return std::accumulate(values_.begin(), values_.end(), 0.0) /
           static_cast<double>(values_.size());
}

double Statistics::standard_deviation() const
{
    if (values_.size() < 2)
        return 0.0;
    const double center = mean();
    double squares = 0.0;
    for (const double value : values_)
        squares += (value - center) * (value - center);
    return std::sqrt(squares / static_cast<double>(values_.size() - 1));
}

double Statistics::smallest() const
{
    // A NaN is neither smaller nor larger than anything, so that it would not be found.
    if (values_.empty() || std::isnan(mean()))
        return mean();
    return *std::min_element(values_.begin(), values_.end());
}

double Statistics::largest() const
{
    if (values_.empty() || std::isnan(mean()))
        return mean();
    return *std::max_element(values_.begin(), values_.end());
}

int QuantityFormat::deviation_decimals(int at_least) const
{
    int needed = decimals;
    constexpr double one_place = 5.0; // between 1 and 10
    for (double finer = deviation_per_unit / per_unit; finer > one_place; finer /= 10.0)
        --needed;
    return std::max(at_least, needed);
}

namespace
{

std::string number_text(const QuantityFormat& quantity, double value)
{
    const double number = value * quantity.per_unit;
    if (std::isnan(number))
        return "nan"; // whose sign means nothing
    std::string text = formatted("%+.*lf", quantity.decimals, number);
    if (std::isfinite(number) && text.find_first_of("123456789") == std::string::npos)
        text.front() = '+'; // nothing is left of what was below 0
    return text.front() == '+' && !quantity.with_sign ? text.substr(1) : text;
}

/// A deviation without its sign. From what is no finite number there is none, not even in a unit.
std::string deviation_text(const QuantityFormat& quantity, double value, int at_least)
{
    if (!std::isfinite(value))
        return "nan";
    // The mean of equal values may be off by a last digit: no deviation is below 0.
    const double number = std::max(0.0, value) * quantity.deviation_per_unit;
    return formatted("%.*lf", quantity.deviation_decimals(at_least), number) +
           quantity.deviation_unit;
}

const char* unit_in_file(const QuantityFormat& quantity)
{
    return quantity.file_unit != nullptr ? quantity.file_unit : quantity.unit;
}

} // namespace

std::string value_text(const QuantityFormat& quantity, double value)
{
    return number_text(quantity, value) + quantity.unit;
}

std::string statistics_text(const QuantityFormat& quantity, const Statistics& statistics)
{
    const double mean = statistics.mean();
    return number_text(quantity, mean) + unit_in_file(quantity) + " " PLUS_MINUS_IN_FILE " " +
           deviation_text(quantity, statistics.standard_deviation(), 2) + " (+" +
           deviation_text(quantity, statistics.largest() - mean, 1) + ", -" +
           deviation_text(quantity, mean - statistics.smallest(), 1) + ')';
}

std::string range_text(const QuantityFormat& quantity, const Statistics& statistics)
{
    const double smallest = statistics.smallest();
    const double largest = statistics.largest();
    const char* unit = unit_in_file(quantity);
    return number_text(quantity, smallest) + ".." + number_text(quantity, largest) + unit + " (" +
           number_text(quantity, largest - smallest) + unit + ')';
}
