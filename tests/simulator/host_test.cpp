/// The simulator on the computer itself: its files and its clock.
#include "simulator/host.h"
#include "simulator/simulator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

namespace
{

namespace host = simulator::host;

class HostTest : public testing::Test
{
protected:
    void SetUp() override { simulator::reset_for_test(); }

    void TearDown() override
    {
        simulator::reset_for_test();
        std::filesystem::remove_all(top);
    }

    const std::string top =
        testing::TempDir() + "simulator_host_" + std::to_string(std::random_device{}());
    const std::string folder = top + "/a/b";
};

TEST_F(HostTest, FilesAreReplacedAsAWholeAndDamagedOnesGetNamesOfTheirOwn)
{
    const std::string path = folder + "/x.state";
    std::string problem;
    std::string bytes;
    for (const std::string& content : {std::string(300'000, 'x'), std::string{"small"}}) {
        ASSERT_TRUE(host::replace_file(path, "before", false, problem)) << problem;
        ASSERT_TRUE(host::replace_file(path, content, true, problem)) << problem;
        EXPECT_FALSE(std::filesystem::exists(path + ".new"));
        const auto name = host::set_aside(path);
        ASSERT_TRUE(name.has_value());
        ASSERT_EQ(host::read_file(*name, bytes, problem), host::Reading::done);
        EXPECT_EQ(bytes, content);
        EXPECT_EQ(host::read_file(path, bytes, problem), host::Reading::missing);
    }
    problem.clear();
    EXPECT_FALSE(host::replace_file(folder, "a folder", true, problem));
    EXPECT_FALSE(problem.empty());
}

} // namespace
