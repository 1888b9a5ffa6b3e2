/// Rates, data-ready and overflow flags, by kind.
#include "tests/simulator/instrument_test.h"

namespace
{

using MeasurementTest = InstrumentTest;

bool read_voltage()
{
    std::uint8_t valid = 0;
    double value = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHVsupplyOutputVoltage(2, &valid, &value), 0);
    return valid != 0;
}

bool read_controller()
{
    const bool ready = (got(COM_KOV_CTRL_GetDataReadyFlags) & 1) != 0;
    double v24 = 0, v5 = 0, v33 = 0, cpu = 0, psu = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHousekeeping(&v24, &v5, &v33, &cpu, &psu), 0);
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
    {"heater monitoring", 0, 0, 100, [] { return monitoring().ready; }},
    {"HV voltage", 2, 4, 50, read_voltage},
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

} // namespace
