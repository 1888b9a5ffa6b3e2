/// What the tests of the simulated instrument share.
#pragma once

#include "devlib/COM-KOV-CTRL.h"
#include "simulator/simulator.h"
#include "tests/simulator/virtual_host.h"
#include "tests/support/virtual_time.h"

#include <gtest/gtest.h>
#include <string>

/// A new instrument at an open port, at the beginning of time.
class InstrumentTest : public testing::Test
{
protected:
    void SetUp() override
    {
        virtual_time::reset();
        virtual_host::reset();
        simulator::reset_for_test();
        ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
    }

    /// Leaves nothing open for the next test.
    void TearDown() override
    {
        simulator::reset_for_test();
        virtual_host::reset();
    }

    static constexpr std::uint8_t port = 3;
};

/// A line of the scenario language that has to be right.
inline void apply(std::string_view line)
{
    std::string problem;
    ASSERT_TRUE(simulator::apply(line, problem)) << line << ": " << problem;
}

inline void wait_seconds(double seconds)
{
    virtual_time::advance_us(static_cast<std::int64_t>(seconds * 1e6));
}

/// The result of a getter with a single result; a failed call fails the test.
template <typename T>
T got(std::int32_t (*getter)(T*))
{
    T value{};
    EXPECT_EQ(getter(&value), 0) << COM_KOV_CTRL_GetErrorMessage();
    return value;
}

/// The same of the unit at an address.
template <typename T>
T got(std::int32_t (*getter)(std::uint32_t, T*), std::uint32_t address)
{
    T value{};
    EXPECT_EQ(getter(address, &value), 0) << COM_KOV_CTRL_GetErrorMessage();
    return value;
}

/// The last measurement of the heater.
struct Monitoring {
    bool ready = false;
    double output = 0, heater = 0, current = 0, temperature = 0;
};

inline Monitoring monitoring()
{
    Monitoring m;
    std::uint8_t ready = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHeatCtrlMonitoring(&ready, &m.output, &m.heater, &m.current,
                                                 &m.temperature),
              0);
    m.ready = ready != 0;
    return m;
}
