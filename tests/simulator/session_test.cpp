/// Opening and closing, the state file, restart, and the times that transfers take.
#include "simulator/model/operation.h"
#include "simulator/state_file.h"
#include "tests/simulator/instrument_test.h"

#include <cmath>
#include <functional>

namespace
{

class SessionTest : public InstrumentTest
{
protected:
    void SetUp() override
    {
        InstrumentTest::SetUp();
        COM_KOV_CTRL_Close();
        virtual_host::computer().environment.clear(); // keep the state
    }

    /// As another process would find it: nothing of the running instrument is left.
    static void start_again()
    {
        COM_KOV_CTRL_Close();
        simulator::reset_for_test();
    }

    static std::string& state_file() { return virtual_host::computer().files["/state/COM3.state"]; }
};

/// A time and its total in whole seconds.
struct Times {
    std::uint32_t seconds = 0, total = 0;
    bool operator==(const Times&) const = default;
};

template <typename Getter>
Times times(Getter getter)
{
    Times times;
    std::uint16_t ms = 0, total_ms = 0;
    EXPECT_EQ(getter(&times.seconds, &ms, &times.total, &total_ms), 0);
    return times;
}

std::string last_error()
{
    return COM_KOV_CTRL_GetErrorMessage();
}

TEST_F(SessionTest, NothingButTheLibraryAnswersWithoutAPort)
{
    std::uint16_t state = 0;
    EXPECT_NE(COM_KOV_CTRL_GetState(&state), 0);
    EXPECT_EQ(last_error(), "the port is not open");
    EXPECT_NE(COM_KOV_CTRL_Close(), 0);
    EXPECT_NE(COM_KOV_CTRL_Open(0), 0);
    EXPECT_EQ(last_error(), "there is no such port");
    EXPECT_GE(COM_KOV_CTRL_GetSWVersion(), 0x0100);
    EXPECT_EQ(COM_KOV_CTRL_CloseDebugFile(), 0);
    ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
    EXPECT_NE(COM_KOV_CTRL_Open(port), 0);
    EXPECT_EQ(last_error(), "the port is already open");
}

TEST_F(SessionTest, SettingsAndTimesSurviveTheProgram)
{
    ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
    apply("slot2.present 0");
    COM_KOV_CTRL_RescanModules();
    COM_KOV_CTRL_SetScannedModuleState();
    COM_KOV_CTRL_SetEnable(1);
    COM_KOV_CTRL_SetModuleActivationState(128, 0);
    COM_KOV_CTRL_SaveCurrentConfig(4);
    COM_KOV_CTRL_SetConfigName(4, "bake out");
    wait_seconds(100);
    start_again();
    wait_seconds(86'400);
    ASSERT_EQ(COM_KOV_CTRL_Open(port), 0) << last_error();
    EXPECT_EQ(times(COM_KOV_CTRL_GetUptimeInt).seconds, 86'500U);
    EXPECT_EQ(got(COM_KOV_CTRL_GetEnable), 1);
    EXPECT_EQ(got(COM_KOV_CTRL_GetModuleActivationState, 128), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetScannedModuleState), 1); // the module is back in its slot
    char name[203] = {};
    ASSERT_EQ(COM_KOV_CTRL_GetConfigName(4, name), 0);
    EXPECT_STREQ(name, "bake out");
}

TEST_F(SessionTest, DamagedStateIsSetAsideNotOverwritten)
{
    for (const int kind : {0, 1, 2, 3}) {
        SetUp();
        ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
        ASSERT_EQ(COM_KOV_CTRL_SetEnable(1), 0);
        start_again();
        std::string changed = state_file();
        changed[changed.size() / 2] ^= 1;
        const std::string damages[] = {changed, changed.substr(0, changed.size() / 3),
                                       "a letter to somebody\n", ""};
        const std::string damaged = damages[kind];
        state_file() = damaged;
        EXPECT_NE(COM_KOV_CTRL_Open(port), 0) << kind;
        EXPECT_EQ(last_error(), "the state file '/state/COM3.state' was damaged and is now "
                                "'/state/COM3.state.damaged1'; the next opening starts a new "
                                "instrument");
        EXPECT_EQ(virtual_host::computer().files["/state/COM3.state.damaged1"], damaged);
        EXPECT_EQ(virtual_host::computer().own_lock, "");
        ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
        EXPECT_EQ(got(COM_KOV_CTRL_GetEnable), 0);
    }
}

TEST_F(SessionTest, StateThatCannotBeWrittenFailsTheCall)
{
    ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
    virtual_host::computer().disk_full = true;
    EXPECT_NE(COM_KOV_CTRL_SetEnable(1), 0);
    EXPECT_EQ(last_error(), "cannot write '/state/COM3.state': No space left on device");
    virtual_host::computer().disk_full = false;
    start_again(); // closing writes what is not on the disk yet
    ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetEnable), 1);
    COM_KOV_CTRL_Close();
    virtual_host::computer().has_home = false;
    EXPECT_NE(COM_KOV_CTRL_Open(port), 0);
    EXPECT_EQ(last_error(), "no folder is known for the instrument's state; KOV_SIMULATOR_STATE "
                            "may name a file, or none");
}

TEST(StateFile, TimesThatNoInstrumentHasAreRefused)
{
    using simulator::Instrument;
    constexpr std::int64_t now_us = 1'800'000'000'000'000;
    constexpr std::int64_t wild_us = 9'000'000'000'000'000'000;
    const std::function<void(Instrument&)> changes[] = {
        [](Instrument& left) { left.now_us = wild_us, left.next_step_us = wild_us + 1; },
        [](Instrument& left) { left.now_us = -1; },
        [](Instrument& left) { left.next_step_us = -wild_us; },
        [](Instrument& left) { left.next_step_us += 10'001; },
        [](Instrument& left) { left.origin_us = -wild_us; },
        [](Instrument& left) { left.clocks[5].started_us = now_us + 1; },
        [](Instrument& left) { left.clocks[0].operating_since_us = -wild_us; },
        [](Instrument& left) { left.clocks[3].before_us = wild_us; },
    };
    Instrument found;
    const auto is_read = [&](const auto& change) {
        Instrument left;
        simulator::make_new(left, now_us);
        change(left);
        return simulator::read_state(found, simulator::write_state(left));
    };
    EXPECT_TRUE(is_read([](Instrument& left) {
        left.heater.temperature = 1e300;
        left.supplies[1].output = std::nan("");
    }));
    EXPECT_EQ(found.heater.temperature, 25);
    EXPECT_EQ(found.supplies[1].output, 0);
    for (const auto& change : changes)
        EXPECT_FALSE(is_read(change)) << &change - changes;
    EXPECT_EQ(found.now_us, now_us);
}

TEST_F(SessionTest, RestartKeepsTheSettingsAndOperationTimeRunsWhileTheDeviceIsOn)
{
    ASSERT_EQ(COM_KOV_CTRL_Open(port), 0);
    wait_seconds(10);
    ASSERT_EQ(COM_KOV_CTRL_SetEnable(1), 0);
    wait_seconds(100);
    const std::int64_t before_us = virtual_time::now_us();
    ASSERT_EQ(COM_KOV_CTRL_Restart(), 0);
    EXPECT_GT(virtual_time::now_us(), before_us);
    wait_seconds(7);
    EXPECT_EQ(got(COM_KOV_CTRL_GetEnable), 1);
    COM_KOV_CTRL_SetEnable(0);
    wait_seconds(40);
    EXPECT_EQ(times(COM_KOV_CTRL_GetUptimeInt), (Times{47, 157}));
    EXPECT_EQ(times(COM_KOV_CTRL_GetOptimeInt), (Times{7, 107}));
}

} // namespace
