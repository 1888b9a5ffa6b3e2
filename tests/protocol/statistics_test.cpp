#include <gtest/gtest.h>

#include "protocol/statistics.h"

namespace
{

Statistics of(std::initializer_list<double> values)
{
    Statistics statistics;
    for (const double value : values)
        statistics.add(value);
    return statistics;
}

TEST(Statistics, DescribesASeries)
{
    const Statistics series = of({2, 4, 4, 4, 5, 5, 7, 9});
    EXPECT_DOUBLE_EQ(series.mean(), 5.0);
    EXPECT_NEAR(series.standard_deviation(), 2.13809, 1e-5) << "of a sample: n - 1";
    EXPECT_EQ(of({3}).standard_deviation(), 0.0);
    EXPECT_EQ(of({}).mean() + of({}).smallest() + of({}).largest(), 0.0);
}

TEST(Statistics, InTheUnitsOfTheReport)
{
    EXPECT_EQ(statistics_text(quantity::volts, of({3.298, 3.3, 3.305})),
              "3.301V \xB1 3.61mV (+4.0mV, -3.0mV)");
    EXPECT_EQ(statistics_text(quantity::picoamperes, of({-2e-12, -4e-12})),
              "-3pA \xB1 1.41pA (+1.0pA, -1.0pA)");
    EXPECT_EQ(statistics_text(quantity::degrees, of({30, 31})), "30.5\xB0"
                                                                "C \xB1 0.71\xB0"
                                                                "C (+0.5\xB0"
                                                                "C, -0.5\xB0"
                                                                "C)");
    EXPECT_EQ(statistics_text(quantity::megahertz, of({72e6, 72.001e6})),
              "72.00MHz \xB1 0.71kHz (+0.5kHz, -0.5kHz)");
    // Equal values have no deviation, and none below 0 from rounding.
    EXPECT_EQ(statistics_text(quantity::volts, of({0.1, 0.1, 0.1})),
              "0.100V \xB1 0.00mV (+0.0mV, -0.0mV)");
    EXPECT_EQ(range_text(quantity::fine_degrees, of({81.25, 80, 80.5})), "80.000..81.250\xB0"
                                                                         "C (1.250\xB0"
                                                                         "C)");
    EXPECT_EQ(value_text(quantity::picoamperes, 5e-12), "+5pA");
}

} // namespace
