/// Faults, waits, forced replies, the trace and the last error: what all functions share.
#include "tests/simulator/instrument_test.h"
#include "tests/support/temporary_file.h"

#include <algorithm>

namespace
{

using CallTest = InstrumentTest;

bool state_fails()
{
    std::uint16_t state = 0;
    return COM_KOV_CTRL_GetState(&state) != 0;
}

/// Which of the next calls of GetState fail, as "..x.".
std::string failing_calls(std::size_t count, double seconds_between)
{
    std::string calls;
    for (std::size_t i = 0; i < count; ++i) {
        calls += state_fails() ? 'x' : '.';
        wait_seconds(seconds_between);
    }
    return calls;
}

TEST_F(CallTest, FaultsStrikeTheCallsTheyName)
{
    struct {
        const char* line;
        double seconds_between;
        std::string calls;
    } const cases[] = {
        {"fail GetState at 3", 0, "..x..."},
        {"fail COM_KOV_CTRL_GetState every 2", 0, ".x.x.x"},
        {"fail GetState always", 0, "xxxxxx"},
        {"fail GetState after 1000 for 2000", 0.5, "..xxxx......"},
        {"fail * at 2", 0, ".x...."},
        {"fail GetDeviceState always", 0, "......"},
    };
    for (const auto& [line, seconds_between, calls] : cases) {
        SetUp();
        apply(line);
        EXPECT_EQ(failing_calls(calls.size(), seconds_between), calls) << line;
    }
}

TEST_F(CallTest, LastErrorStaysUntilTheNextFailure)
{
    apply("fail GetState at 1 text \"broken\\tcable\"");
    EXPECT_TRUE(state_fails());
    for (int asked = 0; asked < 2; ++asked) {
        EXPECT_FALSE(state_fails()); // a good call changes nothing
        EXPECT_STREQ(COM_KOV_CTRL_GetErrorMessage(), "broken\tcable");
        EXPECT_STREQ(COM_KOV_CTRL_GetIOStateMessage(got(COM_KOV_CTRL_GetIOState)), "time-out");
        EXPECT_STREQ(COM_KOV_CTRL_GetCommErrorMessage(got(COM_KOV_CTRL_GetCommError)),
                     "receive time-out");
    }
    EXPECT_STREQ(COM_KOV_CTRL_GetIOStateMessage(99), "unknown I/O state 99");
}

TEST_F(CallTest, TraceHasOneReadableLineACall)
{
    const TemporaryFile file;
    std::string name = file.name();
    std::replace(name.begin(), name.end(), '\\', '/'); // which the trace shows as it is
    ASSERT_EQ(COM_KOV_CTRL_OpenDebugFile(name.c_str()), 0);
    wait_seconds(1.5);
    std::uint32_t baud = 100'000;
    COM_KOV_CTRL_SetBaudRate(&baud);
    got(COM_KOV_CTRL_GetModuleState, 128);
    COM_KOV_CTRL_Test("say \"hi\"");
    std::uint8_t memory[2] = {};
    COM_KOV_CTRL_GetMemoryData(0x3FFFF, 2, memory);
    apply("fail GetState at 1");
    EXPECT_TRUE(state_fails());
    ASSERT_EQ(COM_KOV_CTRL_CloseDebugFile(), 0);
    got(COM_KOV_CTRL_GetState);
    EXPECT_EQ(file.text(),
              "2026/03/14 09:26:53.589  COM_KOV_CTRL_OpenDebugFile(\"" + name + "\")  OK\n" +
                  R"(2026/03/14 09:26:55.089  COM_KOV_CTRL_SetBaudRate(100000)  baud=102400  OK
2026/03/14 09:26:55.089  COM_KOV_CTRL_GetModuleState(128)  state=0000h  OK
2026/03/14 09:26:55.089  COM_KOV_CTRL_Test("say \"hi\"")  OK
2026/03/14 09:26:55.089  COM_KOV_CTRL_GetMemoryData(0003FFFFh, 2)  data=00 FF  OK
2026/03/14 09:26:55.089  COM_KOV_CTRL_GetState()  error -7: "no answer from the device"
)");
    EXPECT_NE(COM_KOV_CTRL_OpenDebugFile("/no/such/folder/Debug.txt"), 0);
}

} // namespace
