/// Faults, waits, forced replies, the trace and the last error: what all functions share.
#include "tests/simulator/instrument_test.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <vector>

namespace
{

class CallTest : public InstrumentTest
{
};

bool state_fails()
{
    std::uint16_t state = 0;
    return COM_KOV_CTRL_GetState(&state) != 0;
}

/// Which of the next calls of GetState fail, as "..x.".
std::string failing_calls(unsigned count, double seconds_between = 0)
{
    std::string calls;
    for (unsigned i = 0; i < count; ++i) {
        calls += state_fails() ? 'x' : '.';
        wait_seconds(seconds_between);
    }
    return calls;
}

struct FaultCase {
    const char* line;
    double seconds_between;
    const char* calls;
};

TEST_F(CallTest, FaultsStrikeTheCallsTheyName)
{
    const FaultCase cases[] = {
        {"fail GetState at 3", 0, "..x..."},
        {"fail COM_KOV_CTRL_GetState every 2", 0, ".x.x.x"},
        {"fail GetState always", 0, "xxxxxx"},
        {"fail GetState after 1000 for 2000", 0.5, "..xxxx......"},
        {"fail * at 2", 0, ".x...."},
        {"fail GetDeviceState always", 0, "......"},
    };
    for (const FaultCase& row : cases) {
        SetUp();
        apply(row.line);
        EXPECT_EQ(failing_calls(static_cast<unsigned>(std::string(row.calls).size()),
                                row.seconds_between),
                  row.calls)
            << row.line;
    }
}

TEST_F(CallTest, FaultOfOneAddressLeavesTheOthers)
{
    apply("fail GetModuleState@2 always");
    std::uint16_t state = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetModuleState(1, &state), 0);
    EXPECT_NE(COM_KOV_CTRL_GetModuleState(2, &state), 0);
    apply("fail GetModuleState@2 never");
    EXPECT_EQ(COM_KOV_CTRL_GetModuleState(2, &state), 0);
}

TEST_F(CallTest, FailedCallDoesNothing)
{
    apply("fail SetEnable at 1");
    EXPECT_NE(COM_KOV_CTRL_SetEnable(1), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetEnable), 0);
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
    apply("fail GetIOState at 1");
    std::uint32_t io_state = 0;
    EXPECT_NE(COM_KOV_CTRL_GetIOState(&io_state), 0);
    EXPECT_STREQ(COM_KOV_CTRL_GetErrorMessage(), "broken\tcable");
    std::uint8_t valid = 0;
    double voltage = 0;
    EXPECT_NE(COM_KOV_CTRL_GetHVsupplyOutputVoltage(0, &valid, &voltage), 0);
    EXPECT_STREQ(COM_KOV_CTRL_GetErrorMessage(), "the module with the address 0 is no HV-supply");
    EXPECT_STREQ(COM_KOV_CTRL_GetIOStateMessage(99), "unknown I/O state 99");
}

TEST_F(CallTest, BlockedCallTakesItsTime)
{
    apply("block GetState at 2 for 1500");
    std::vector<std::int64_t> times;
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(state_fails());
        times.push_back(virtual_time::now_us());
    }
    EXPECT_EQ(times, (std::vector<std::int64_t>{0, 1'500'000, 1'500'000}));
}

TEST_F(CallTest, AnswerTimePassesForDeviceCallsAlone)
{
    apply("latency 2.5");
    EXPECT_FALSE(state_fails());
    EXPECT_EQ(virtual_time::now_us(), 2'500);
    COM_KOV_CTRL_GetSWVersion();
    COM_KOV_CTRL_GetErrorMessage();
    EXPECT_EQ(virtual_time::now_us(), 2'500);
}

TEST_F(CallTest, RepliesComeInOrderAndTheLastOneStays)
{
    apply("reply GetState.state 10h 0x11 18");
    std::vector<std::uint16_t> states;
    for (int i = 0; i < 4; ++i)
        states.push_back(got(COM_KOV_CTRL_GetState));
    EXPECT_EQ(states, (std::vector<std::uint16_t>{0x10, 0x11, 18, 18}));
    apply("reply GetState.state never");
    EXPECT_EQ(got(COM_KOV_CTRL_GetState), 1);
}

TEST_F(CallTest, RepliesReachElementsAddressesAndRealNumbers)
{
    apply("reply GetModulePresence.flags[2] 7");
    apply("reply GetModuleCPUdata.load@128 nan");
    apply("reply GetHousekeeping.voltage24 1e300");
    apply("reply GetHousekeeping.voltage5 -inf");
    apply("reply GetProductNo.number -5");
    std::uint8_t valid = 0;
    std::uint32_t slots = 0;
    std::array<std::uint8_t, 8> flags{};
    ASSERT_EQ(COM_KOV_CTRL_GetModulePresence(&valid, &slots, flags.data()), 0);
    EXPECT_EQ(flags, (std::array<std::uint8_t, 8>{1, 1, 7, 1, 1, 0, 0, 0}));
    EXPECT_TRUE(std::isnan(got(COM_KOV_CTRL_GetModuleCPUdata, 128)));
    EXPECT_EQ(got(COM_KOV_CTRL_GetModuleCPUdata, 1), 10.0);
    double v24 = 0, v5 = 0, v33 = 0, cpu = 0, psu = 0;
    ASSERT_EQ(COM_KOV_CTRL_GetHousekeeping(&v24, &v5, &v33, &cpu, &psu), 0);
    EXPECT_EQ(v24, 1e300);
    EXPECT_EQ(v5, -INFINITY);
    EXPECT_EQ(v33, 3.3);
    EXPECT_EQ(got(COM_KOV_CTRL_GetProductNo), -5);
}

TEST_F(CallTest, TextsNeverLeaveTheirBuffer)
{
    std::array<char, 86> buffer;
    buffer.fill('?');
    apply("reply GetProductID.identification \"a\\x01\\n\\\"\" fill \"xyz\"");
    ASSERT_EQ(COM_KOV_CTRL_GetProductID(buffer.data()), 0);
    EXPECT_STREQ(buffer.data(), "a\x01\n\"");
    ASSERT_EQ(COM_KOV_CTRL_GetProductID(buffer.data()), 0);
    std::string full;
    for (int i = 0; i < 28; ++i)
        full += "xyz";
    EXPECT_EQ(std::string(buffer.data(), 86), full + "??");
}

TEST_F(CallTest, ReturnedTextsAndTheVersionCanBeForced)
{
    apply("reply GetErrorMessage.text \"first\" null");
    apply("reply GetIOStateMessage.text@3 \"three\"");
    apply("reply GetSWVersion.version 0063h");
    EXPECT_STREQ(COM_KOV_CTRL_GetErrorMessage(), "first");
    EXPECT_EQ(COM_KOV_CTRL_GetErrorMessage(), nullptr);
    EXPECT_STREQ(COM_KOV_CTRL_GetIOStateMessage(3), "three");
    EXPECT_STREQ(COM_KOV_CTRL_GetIOStateMessage(4), "time-out");
    EXPECT_EQ(COM_KOV_CTRL_GetSWVersion(), 0x63);
}

TEST_F(CallTest, ObserverSeesInputsResultsAndFailures)
{
    std::vector<std::string> seen;
    simulator::observe_calls([&](const simulator::CallRecord& call) {
        seen.push_back(std::string(call.function) + "(" + call.inputs + ") " + call.outputs +
                       (call.status == 0 ? "" : " failed"));
    });
    std::uint32_t baud = 100'000;
    COM_KOV_CTRL_SetBaudRate(&baud);
    got(COM_KOV_CTRL_GetModuleState, 128);
    COM_KOV_CTRL_Test("say \"hi\"");
    std::uint8_t memory[2] = {};
    COM_KOV_CTRL_GetMemoryData(0x3FFFF, 2, memory);
    apply("fail Purge at 1");
    COM_KOV_CTRL_Purge();
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "COM_KOV_CTRL_SetBaudRate(100000) baud=102400",
                        "COM_KOV_CTRL_GetModuleState(128) state=0000h",
                        "COM_KOV_CTRL_Test(\"say \\\"hi\\\"\") ",
                        "COM_KOV_CTRL_GetMemoryData(0003FFFFh, 2) data=00 FF",
                        "COM_KOV_CTRL_Purge()  failed",
                    }));
}

TEST_F(CallTest, TraceHasOneReadableLineACall)
{
    const std::string name = testing::TempDir() + "simulator_trace.txt";
    ASSERT_EQ(COM_KOV_CTRL_OpenDebugFile(name.c_str()), 0);
    wait_seconds(1.5);
    got(COM_KOV_CTRL_GetState);
    apply("fail GetState at 1");
    EXPECT_TRUE(state_fails());
    ASSERT_EQ(COM_KOV_CTRL_CloseDebugFile(), 0);
    got(COM_KOV_CTRL_GetState);
    std::ifstream file(name);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0],
              "2026/03/14 09:26:53.589  COM_KOV_CTRL_OpenDebugFile(\"" + name + "\")  OK");
    EXPECT_EQ(lines[1], "2026/03/14 09:26:55.089  COM_KOV_CTRL_GetState()  state=0001h  OK");
    EXPECT_EQ(lines[2], "2026/03/14 09:26:55.089  COM_KOV_CTRL_GetState()  error -7: \"no answer "
                        "from the device\"");
    std::remove(name.c_str());
    EXPECT_NE(COM_KOV_CTRL_OpenDebugFile("/no/such/folder/Debug.txt"), 0);
}

} // namespace
