/// The simulator on the computer itself: its state file, its lock and its clock.
#include "devlib/COM-KOV-CTRL.h"
#include "simulator/host.h"
#include "simulator/simulator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace host = simulator::host;

class HostTest : public testing::Test
{
protected:
    void SetUp() override
    {
        folder = testing::TempDir() + "simulator_host_" + std::to_string(getpid()) + "/a/b";
        setenv("XDG_STATE_HOME", folder.c_str(), 1);
        unsetenv("KOV_SIMULATOR_STATE");
        simulator::reset_for_test();
    }

    void TearDown() override
    {
        simulator::reset_for_test();
        std::filesystem::remove_all(std::filesystem::path(folder).parent_path().parent_path());
    }

    std::string folder;
};

/// Runs `body` in a process of its own; what it returns is the exit status.
template <typename Body>
int in_another_process(const Body& body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

TEST_F(HostTest, SecondProgramIsRefusedAndToldTheHolder)
{
    ASSERT_EQ(COM_KOV_CTRL_Open(7), 0) << COM_KOV_CTRL_GetErrorMessage();
    const std::string expected =
        "COM7 is used by another program, process " + std::to_string(getpid());
    EXPECT_EQ(in_another_process([&] {
                  simulator::reset_for_test();
                  return COM_KOV_CTRL_Open(7) != 0 && COM_KOV_CTRL_GetErrorMessage() == expected
                             ? 42
                             : 1;
              }),
              42);
}

TEST_F(HostTest, LockAndStateOutliveAKilledProgramAsTheyShould)
{
    EXPECT_EQ(in_another_process([] {
                  const bool changed = COM_KOV_CTRL_Open(7) == 0 && COM_KOV_CTRL_SetEnable(1) == 0;
                  return changed ? 42 : 1; // leaves without closing
              }),
              42);
    ASSERT_EQ(COM_KOV_CTRL_Open(7), 0) << COM_KOV_CTRL_GetErrorMessage();
    std::uint8_t enabled = 0;
    ASSERT_EQ(COM_KOV_CTRL_GetEnable(&enabled), 0);
    EXPECT_EQ(enabled, 1);
}

TEST_F(HostTest, DamagedFilesGetNamesOfTheirOwn)
{
    const std::string path = folder + "/x.state";
    std::string problem;
    std::string bytes;
    for (const char* const content : {"one", "two"}) {
        ASSERT_TRUE(host::replace_file(path, content, true, problem)) << problem;
        const auto name = host::set_aside(path);
        ASSERT_TRUE(name.has_value());
        ASSERT_EQ(host::read_file(*name, bytes, problem), host::Reading::done);
        EXPECT_EQ(bytes, content);
        EXPECT_EQ(host::read_file(path, bytes, problem), host::Reading::missing);
    }
    EXPECT_TRUE(std::filesystem::exists(path + ".damaged1"));
}

TEST_F(HostTest, FileIsReplacedAsAWhole)
{
    const std::string path = folder + "/x.state";
    const std::string large(300'000, 'x');
    std::string problem;
    std::string bytes;
    ASSERT_TRUE(host::replace_file(path, large, false, problem)) << problem;
    ASSERT_TRUE(host::replace_file(path, "small", true, problem)) << problem;
    ASSERT_EQ(host::read_file(path, bytes, problem), host::Reading::done);
    EXPECT_EQ(bytes, "small");
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));
    EXPECT_FALSE(host::replace_file(folder, "a folder", true, problem));
    EXPECT_FALSE(problem.empty());
}

TEST_F(HostTest, AnswerTimeIsNeverShort)
{
    std::string problem;
    ASSERT_TRUE(simulator::apply("latency 2", problem));
    ASSERT_EQ(COM_KOV_CTRL_Open(7), 0);
    std::uint16_t state = 0;
    const std::int64_t asked_us = host::monotonic_us();
    ASSERT_EQ(COM_KOV_CTRL_GetState(&state), 0);
    EXPECT_GE(host::monotonic_us() - asked_us, 2'000);
}

} // namespace
