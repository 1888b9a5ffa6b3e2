/// Ten thousand calls with valid arguments in any order: nothing crashes, nothing is written beyond
/// its buffer, no value leaves its bounds.
#include "tests/simulator/instrument_test.h"

#include <array>
#include <cmath>
#include <random>

namespace
{

/// Results of any call, with room that has to stay untouched behind the longest one.
struct Results {
    std::array<std::uint8_t, 1024> bytes{}, more_bytes{};
    std::array<char, 210> text{};
    std::array<double, 9> reals{};
    std::array<std::uint32_t, 4> words{};
    std::array<std::uint16_t, 6> shorts{};
    std::array<std::int32_t, 2> numbers{};
    std::array<std::uint8_t, 12> flags{};
    float pwm = 0;
    ConfigRecord config{};
};

class RandomCaller
{
public:
    explicit RandomCaller(Results& results) : r(results) {}

    void call()
    {
        const std::uint32_t a = address();
        const auto index = static_cast<std::uint16_t>(below(1023));
        double value = std::uniform_real_distribution(-100.0, 4000.0)(random);
        auto& f = r.flags;
        auto& d = r.reals;
        auto& s = r.shorts;
        // clang-format off
        switch (below(40)) {
        case 0: COM_KOV_CTRL_SetEnable(flag()); break;
        case 1: COM_KOV_CTRL_SetModuleActivationState(a, flag()); break;
        case 2: COM_KOV_CTRL_SetHeatCtrlHeaterTemperature(&value); break;
        case 3: COM_KOV_CTRL_SetHeatCtrlVoltageLimit(&value); break;
        case 4: COM_KOV_CTRL_SetHeatCtrlCurrentLimit(&value); break;
        case 5: COM_KOV_CTRL_SetHeatCtrlPowerLimit(&value); break;
        case 6: COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage(a, value); break;
        case 7: COM_KOV_CTRL_SetHVsupplyMeasRanges(a, flag(), flag()); break;
        case 8: COM_KOV_CTRL_SetHVsupplyInterlockEnable(below(0x10000)); break;
        case 9: COM_KOV_CTRL_SetHeatCtrlInterlockEnable(below(0x10000)); break;
        case 10: COM_KOV_CTRL_SetFanSwitchOverride(below(0x10000)); break;
        case 11: COM_KOV_CTRL_GetCurrentConfig(&r.config); break;
        case 12: random_config(); COM_KOV_CTRL_SetCurrentConfig(&r.config); break;
        case 13: random_config(); COM_KOV_CTRL_SetConfigData(index, &r.config); break;
        case 14: COM_KOV_CTRL_SaveCurrentConfig(index); break;
        case 15: COM_KOV_CTRL_LoadCurrentConfig(index); break;
        case 16: COM_KOV_CTRL_GetConfigName(index, r.text.data()); break;
        case 17: COM_KOV_CTRL_SetConfigFlags(index, flag(), flag()); break;
        case 18: COM_KOV_CTRL_GetConfigList(r.bytes.data(), r.more_bytes.data()); break;
        case 19: memory(); break;
        case 20: COM_KOV_CTRL_UpdateMemoryData(); break;
        case 21: COM_KOV_CTRL_RestartModule(a); break;
        case 22: COM_KOV_CTRL_RescanModules(); break;
        case 23: COM_KOV_CTRL_SetScannedModuleState(); break;
        case 24: COM_KOV_CTRL_GetModulePresence(&f[0], &r.words[0], r.bytes.data()); break;
        case 25: COM_KOV_CTRL_GetModuleProductID(a, r.text.data()); break;
        case 26: COM_KOV_CTRL_GetModuleFwDate(a, r.text.data()); break;
        case 27: COM_KOV_CTRL_GetModuleState(a, &s[0]); break;
        case 28: COM_KOV_CTRL_GetModuleUptimeInt(a, &r.words[0], &s[0], &r.words[1], &s[1]); break;
        case 29: COM_KOV_CTRL_GetHousekeeping(&d[0], &d[1], &d[2], &d[3], &d[4]); break;
        case 30: COM_KOV_CTRL_GetHVsupplyHousekeeping(a, &f[0], &d[0], &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7], &d[8]); break;
        case 31: COM_KOV_CTRL_GetFanData(&f[0], &s[0], &s[1], &s[2], &r.pwm); break;
        case 32: COM_KOV_CTRL_Test("0123456789"); break;
        case 33: COM_KOV_CTRL_Restart(); break;
        case 34: COM_KOV_CTRL_GetHVsupplyOutputCurrent(a, &f[0], &d[0]); break;
        case 35: COM_KOV_CTRL_GetScannedModuleParams(a, &r.numbers[0], &r.numbers[1], &r.words[0], &r.words[1]); break;
        default: check(a); break;
        }
        // clang-format on
        virtual_time::advance_us(below(300'000));
    }

private:
    std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); }

    std::uint32_t address()
    {
        constexpr std::uint32_t addresses[] = {0, 1, 2, 3, 128, 255};
        return addresses[below(6)];
    }

    std::uint8_t flag() { return static_cast<std::uint8_t>(below(2)); }

    void random_config()
    {
        for (std::uint8_t& byte : r.config.bytes)
            byte = static_cast<std::uint8_t>(below(256));
    }

    void memory()
    {
        const auto start = below(0x400A0 - 1024);
        const auto count = below(1025);
        COM_KOV_CTRL_GetMemoryData(start, count, r.bytes.data());
        COM_KOV_CTRL_SetMemoryData(start, count, r.bytes.data());
    }

    /// What has to hold at any time.
    void check(std::uint32_t a)
    {
        std::uint8_t valid = 0;
        double voltage = 0;
        const Monitoring m = monitoring();
        ASSERT_TRUE(m.heater >= 0 && m.heater <= 22.001 && m.current <= 5.001) << m.heater;
        ASSERT_TRUE(m.temperature > 24.9 && m.temperature < 200.1) << m.temperature;
        if (COM_KOV_CTRL_GetHVsupplyOutputVoltage(a, &valid, &voltage) == 0) {
            ASSERT_LE(std::abs(voltage), 6001); // twice the range while ranges settle
        }
        auto& b = r.bytes;
        auto& s = r.shorts;
        ASSERT_EQ(COM_KOV_CTRL_GetCompleteState(&b[0], &b[1], &b[2], &b[3], &b[4], &s[0],
                                                &r.shorts[5], &b[5], modules.data()),
                  0);
        for (const std::uint16_t module : modules) // active control needs an active module
            ASSERT_TRUE((module & 0x0100) == 0 || (module & 0xC000) == 0xC000) << module;
    }

    Results& r;
    std::array<std::uint16_t, 5> modules{};
    std::mt19937 random{20260314};
};

TEST_F(InstrumentTest, SurvivesTenThousandRandomCalls)
{
    Results results;
    RandomCaller caller(results);
    for (int i = 0; i < 10'000 && !HasFatalFailure(); ++i)
        caller.call();
    EXPECT_EQ(COM_KOV_CTRL_Close(), 0);
}

} // namespace
