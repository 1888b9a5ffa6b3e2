/// The simulator's files on the computer itself.
#include "simulator/host.h"
#include "tests/support/temporary_file.h"

namespace
{

namespace host = simulator::host;

TEST(Host, FilesAreReplacedAsAWholeAndDamagedOnesGetNamesOfTheirOwn)
{
    const TemporaryFolder top;
    const std::string folder = std::filesystem::current_path().string() + "/a/b";
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
    ASSERT_TRUE(host::replace_file(path, "", false, problem));
    std::filesystem::resize_file(path, 3'000'000'000);
    EXPECT_EQ(host::read_file(path, bytes, problem), host::Reading::failed);
    EXPECT_EQ(problem, "it is too large");
    problem.clear();
    EXPECT_FALSE(host::replace_file(folder, "a folder", true, problem));
    EXPECT_FALSE(problem.empty());
}

} // namespace
