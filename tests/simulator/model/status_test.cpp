/// One state, whichever word is read: what each cause does to words, levels, LEDs and control.
#include "tests/simulator/instrument_test.h"

namespace
{

using StatusTest = InstrumentTest;

struct Words {
    std::uint16_t state;
    std::uint8_t device;
    std::uint8_t voltage;
    std::uint8_t temperature;
    bool operator==(const Words&) const = default;
};

Words words()
{
    return {got(COM_KOV_CTRL_GetState), got(COM_KOV_CTRL_GetDeviceState),
            got(COM_KOV_CTRL_GetVoltageState), got(COM_KOV_CTRL_GetTemperatureState)};
}

/// Red, green and blue as letters.
std::string led()
{
    std::uint8_t red = 0, green = 0, blue = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetLEDData(&red, &green, &blue), 0);
    return std::string(red != 0 ? "R" : "") + (green != 0 ? "G" : "") + (blue != 0 ? "B" : "");
}

TEST_F(StatusTest, EveryCauseShowsInAllItsWords)
{
    struct {
        std::vector<const char*> lines;
        Words words;
        bool device_active; ///< with the device enabled
    } const causes[] = {
        {{"psu.temperature 55"}, {0x14, 0x04, 0x37, 0x02}, false},
        {{"psu.temperature 50"}, {0x00, 0x00, 0x37, 0x00}, true},
        {{"cpu.temperature 50.1"}, {0x14, 0x04, 0x37, 0x01}, false},
        {{"cpu.temperature 4.9"}, {0x13, 0x04, 0x37, 0x04}, false},
        {{"voltage33 3.0"}, {0x12, 0x02, 0x36, 0x00}, false},
        {{"voltage5 5.3"}, {0x12, 0x02, 0x35, 0x00}, false},
        {{"voltage24 nan"}, {0x12, 0x02, 0x33, 0x00}, false},
        {{"power.dc_output off"}, {0x12, 0x02, 0x13, 0x00}, false},
        {{"power.ac_input off"}, {0x12, 0x02, 0x03, 0x00}, false},
        {{"interlock.front open"}, {0x15, 0x01, 0x37, 0x00}, true},
        {{"interlock.1 noisy"}, {0x15, 0x01, 0x37, 0x00}, true},
        {{"fan.failed on"}, {0x10, 0x08, 0x37, 0x00}, true},
        {{"slot3.device_type 56092"}, {0x11, 0x10, 0x37, 0x00}, false},
        // the most severe first
        {{"fan.failed on", "interlock.rear open"}, {0x15, 0x09, 0x37, 0x00}, true},
        {{"interlock.rear open", "psu.temperature 0"}, {0x13, 0x05, 0x37, 0x08}, false},
        {{"psu.temperature 0", "voltage5 4"}, {0x12, 0x06, 0x35, 0x08}, false},
        {{"voltage5 4", "cpu.temperature 60"}, {0x14, 0x06, 0x35, 0x01}, false},
        {{"state.overall 0016h"}, {0x16, 0x00, 0x37, 0x00}, true},
    };
    for (const auto& cause : causes) {
        SetUp();
        COM_KOV_CTRL_SetEnable(1);
        SCOPED_TRACE(cause.lines.back());
        for (const char* const line : cause.lines)
            apply(line);
        EXPECT_EQ(words(), cause.words);
        EXPECT_EQ(got(COM_KOV_CTRL_GetModuleState, 128), cause.device_active ? 0x8000 : 0);
        EXPECT_EQ(led(), cause.words.state == 0 ? "G" : "R");
    }
}

TEST_F(StatusTest, InterlockWordLatchesUntilItIsRead)
{
    EXPECT_EQ(got(COM_KOV_CTRL_GetInterlockState), 0xFF0F);
    apply("interlock.front open");
    EXPECT_EQ(got(COM_KOV_CTRL_GetInterlockState), 0xAF0B);
    apply("interlock.front closed");
    EXPECT_EQ(got(COM_KOV_CTRL_GetInterlockState), 0xBF0F);
    EXPECT_EQ(got(COM_KOV_CTRL_GetInterlockState), 0xFF0F);
    apply("interlock.2 open");
    apply("interlock.1 noisy");
    EXPECT_EQ(got(COM_KOV_CTRL_GetHeatCtrlIlockState), 0x01);
    std::uint8_t front = 9, rear = 9, fan = 9;
    apply("interlock.rear open");
    ASSERT_EQ(COM_KOV_CTRL_GetInputs(&front, &rear, &fan), 0);
    EXPECT_EQ(std::tuple(front, rear, fan), std::tuple(1, 0, 1));
}

TEST_F(StatusTest, InterlockStopsTheModulesThatItsMaskNames)
{
    const double target = 50;
    COM_KOV_CTRL_SetEnable(1);
    COM_KOV_CTRL_SetHeatCtrlHeaterTemperature(&target);
    COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage(1, 100);
    COM_KOV_CTRL_SetModuleActivationState(0, 1);
    COM_KOV_CTRL_SetModuleActivationState(1, 1);
    const auto states = [] {
        return std::pair(got(COM_KOV_CTRL_GetModuleState, 0), got(COM_KOV_CTRL_GetModuleState, 1));
    };
    EXPECT_EQ(states(), std::pair(std::uint16_t{0xC100}, std::uint16_t{0xC100}));
    COM_KOV_CTRL_SetHeatCtrlInterlockEnable(0x01);
    COM_KOV_CTRL_SetHVsupplyInterlockEnable(0x04);
    apply("interlock.1 open");
    EXPECT_EQ(states(), std::pair(std::uint16_t{0xC000}, std::uint16_t{0xC100}));
    apply("interlock.1 closed");
    apply("interlock.front open");
    EXPECT_EQ(states(), std::pair(std::uint16_t{0xC100}, std::uint16_t{0xC000}));
    COM_KOV_CTRL_SetHVsupplyInterlockEnable(0);
    EXPECT_EQ(states(), std::pair(std::uint16_t{0xC100}, std::uint16_t{0xC100}));
    EXPECT_EQ(got(COM_KOV_CTRL_GetState), 0);
}

} // namespace
