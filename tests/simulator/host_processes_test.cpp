/// The simulator on the computer itself, in more than one process: its state file and its lock.
#include "devlib/COM-KOV-CTRL.h"
#include "simulator/host.h"
#include "simulator/simulator.h"
#include "tests/support/temporary_file.h"

#include <cstdlib>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

bool is_true_in_another_process(const std::function<bool()>& condition)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(condition() ? 42 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 42;
}

TEST(Processes, LockAndStateOutliveAKilledProgramAsTheyShould)
{
    const TemporaryFolder folder;
    setenv("XDG_STATE_HOME", (std::filesystem::current_path() / "a/b").c_str(), 1);
    unsetenv("KOV_SIMULATOR_STATE");
    simulator::reset_for_test();
    const auto enables = [] { return COM_KOV_CTRL_Open(7) == 0 && COM_KOV_CTRL_SetEnable(1) == 0; };
    EXPECT_TRUE(is_true_in_another_process(enables)); // which leaves without closing
    ASSERT_EQ(COM_KOV_CTRL_Open(7), 0) << COM_KOV_CTRL_GetErrorMessage();
    std::uint8_t enabled = 0;
    ASSERT_EQ(COM_KOV_CTRL_GetEnable(&enabled), 0);
    EXPECT_EQ(enabled, 1);
    const auto is_refused_and_told_the_holder = [holder = getpid()] {
        simulator::reset_for_test();
        return COM_KOV_CTRL_Open(7) != 0 &&
               COM_KOV_CTRL_GetErrorMessage() ==
                   "COM7 is used by another program, process " + std::to_string(holder);
    };
    EXPECT_TRUE(is_true_in_another_process(is_refused_and_told_the_holder));
    simulator::reset_for_test();
}

TEST(Processes, TwoNamesOfOneStateAreOnePort)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories("states");
    std::filesystem::create_symlink("states", "link");
    std::filesystem::create_symlink("states/x", "dangling");
    const auto opens = [](const char* name) {
        setenv("KOV_SIMULATOR_STATE", name, 1);
        simulator::reset_for_test();
        return COM_KOV_CTRL_Open(7) == 0;
    };
    ASSERT_TRUE(opens("dangling")); // the state is made where it leads
    COM_KOV_CTRL_Close();
    std::filesystem::create_hard_link("states/x", "hard");
    ASSERT_TRUE(opens("states/../states/x")) << COM_KOV_CTRL_GetErrorMessage();
    for (const char* const name : {"states/x", "link/x", "dangling", "hard"})
        EXPECT_FALSE(is_true_in_another_process([&] { return opens(name); })) << name;
    EXPECT_TRUE(std::filesystem::is_symlink("dangling"));
    simulator::reset_for_test();
    unsetenv("KOV_SIMULATOR_STATE");
}

TEST(Processes, WhatIsNoFileIsNoState)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    std::string bytes;
    std::string problem;
    for (const char* const name : {"fifo", "/dev/zero", "."}) {
        EXPECT_EQ(simulator::host::read_file(name, bytes, problem),
                  simulator::host::Reading::failed);
        EXPECT_EQ(problem, "it is no regular file") << name;
    }
    // Somebody laid a link where the new state is written first.
    write_file("precious", "kept");
    std::filesystem::create_symlink("precious", "state.new");
    EXPECT_TRUE(simulator::host::replace_file("state", "new", true, problem)) << problem;
    EXPECT_EQ(contents("precious"), "kept");
    EXPECT_EQ(contents("state"), "new");
}

} // namespace
