#include "protocol/statistics.h"

#include "frame/format.h"

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
    return values_.empty() ? 0.0 : *std::min_element(values_.begin(), values_.end());
}

double Statistics::largest() const
{
    return values_.empty() ? 0.0 : *std::max_element(values_.begin(), values_.end());
}

namespace
{

std::string number_text(const QuantityFormat& quantity, double value)
{
    const double number = value * quantity.per_unit;
    return quantity.with_sign ? formatted("%+.*lf", quantity.decimals, number)
                              : formatted("%.*lf", quantity.decimals, number);
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
    const char* unit = quantity.deviation_unit;
    // The mean of equal values may be off by a last digit: no deviation is below 0.
    const auto deviation = [&](double value) {
        return std::max(0.0, value) * quantity.deviation_per_unit;
    };
    const std::string deviations = formatted(" " PLUS_MINUS_IN_FILE " %.2lf%s (+%.1lf%s, -%.1lf%s)",
                                             deviation(statistics.standard_deviation()), unit,
                                             deviation(statistics.largest() - mean), unit,
                                             deviation(mean - statistics.smallest()), unit);
    return number_text(quantity, mean) + unit_in_file(quantity) + deviations;
}

std::string range_text(const QuantityFormat& quantity, const Statistics& statistics)
{
    const double smallest = statistics.smallest();
    const double largest = statistics.largest();
    const char* unit = unit_in_file(quantity);
    return number_text(quantity, smallest) + ".." + number_text(quantity, largest) + unit + " (" +
           number_text(quantity, largest - smallest) + unit + ')';
}
