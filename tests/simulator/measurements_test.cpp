/// Rates, data-ready and overflow flags, nominal values and noise.
#include "tests/simulator/instrument_test.h"

#include <array>

namespace
{

using MeasurementTest = InstrumentTest;

struct Housekeeping {
    double v24 = 0, v5 = 0, v33 = 0, cpu = 0, psu = 0;
    bool operator==(const Housekeeping&) const = default;
};

Housekeeping housekeeping()
{
    Housekeeping h;
    EXPECT_EQ(COM_KOV_CTRL_GetHousekeeping(&h.v24, &h.v5, &h.v33, &h.cpu, &h.psu), 0);
    return h;
}

bool read_supply_housekeeping()
{
    std::uint8_t valid = 0;
    std::array<double, 9> values{};
    EXPECT_EQ(COM_KOV_CTRL_GetHVsupplyHousekeeping(2, &valid, &values[0], &values[1], &values[2],
                                                   &values[3], &values[4], &values[5], &values[6],
                                                   &values[7], &values[8]),
              0);
    EXPECT_EQ(values, (std::array<double, 9>{3.3, 30, 5, 24, -22, 18, -18, 1.5, 0}));
    return valid != 0;
}

bool read_supply(std::int32_t (*getter)(std::uint32_t, std::uint8_t*, double*))
{
    std::uint8_t valid = 0;
    double value = 0;
    EXPECT_EQ(getter(2, &valid, &value), 0);
    return valid != 0;
}

bool read_controller()
{
    const bool ready = (got(COM_KOV_CTRL_GetDataReadyFlags) & 1) != 0;
    housekeeping();
    return ready;
}

bool read_fan()
{
    const bool ready = (got(COM_KOV_CTRL_GetDataReadyFlags) & 4) != 0;
    std::uint8_t failed = 0;
    std::uint16_t reserved = 0, set = 0, measured = 0;
    float pwm = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetFanData(&failed, &reserved, &set, &measured, &pwm), 0);
    return ready;
}

struct Kind {
    const char* name;
    std::uint32_t address; ///< 255 = the controller
    unsigned shift;        ///< of the pair of flags
    unsigned per_10_seconds;
    bool (*read)();
};

constexpr Kind kinds[] = {
    {"controller housekeeping", 255, 0, 10, read_controller},
    {"fan", 255, 2, 10, read_fan},
    {"heater monitoring", 0, 0, 100, [] { return monitoring().ready; }},
    {"HV housekeeping", 2, 2, 10, read_supply_housekeeping},
    {"HV voltage", 2, 4, 50, [] { return read_supply(COM_KOV_CTRL_GetHVsupplyOutputVoltage); }},
    {"HV current", 2, 6, 100, [] { return read_supply(COM_KOV_CTRL_GetHVsupplyOutputCurrent); }},
};

unsigned flags(const Kind& kind)
{
    const std::uint8_t all = kind.address == 255
                                 ? got(COM_KOV_CTRL_GetDataReadyFlags)
                                 : got(COM_KOV_CTRL_GetModuleDataReadyFlags, kind.address);
    return unsigned{all} >> kind.shift & 3U;
}

TEST_F(MeasurementTest, EveryKindComesAtItsRateAndOverflowsUnread)
{
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        kind.read();
        unsigned fresh = 0;
        for (int millisecond = 0; millisecond < 10'000; ++millisecond) {
            wait_seconds(0.001);
            fresh += kind.read() ? 1U : 0U;
        }
        EXPECT_EQ(fresh, kind.per_10_seconds);
        for (const unsigned expected : {0U, 1U, 3U}) {
            EXPECT_EQ(flags(kind), expected);
            wait_seconds(10.0 / kind.per_10_seconds);
        }
        EXPECT_TRUE(kind.read()) << "a reading takes both flags";
        EXPECT_EQ(flags(kind), 0U);
    }
}

TEST_F(MeasurementTest, NoiseMovesALittleAndRepeats)
{
    const auto series = [] {
        std::vector<Housekeeping> values;
        for (int second = 0; second < 200; ++second) {
            values.push_back(housekeeping());
            wait_seconds(1);
        }
        return values;
    };
    EXPECT_EQ(housekeeping(), (Housekeeping{24, 5, 3.3, 30, 32}));
    apply("noise on");
    const std::vector<Housekeeping> first = series();
    unsigned different = 0;
    for (std::size_t i = 1; i < first.size(); ++i) {
        EXPECT_NEAR(first[i].v24, 24, 24 * 0.01);
        EXPECT_NEAR(first[i].psu, 32, 1);
        different += first[i].v24 != first[i - 1].v24 ? 1U : 0U;
    }
    EXPECT_GT(different, 190U);
    EXPECT_EQ(got(COM_KOV_CTRL_GetTemperatureState), 0);
    SetUp();
    apply("noise on");
    EXPECT_EQ(series(), first);
}

} // namespace
