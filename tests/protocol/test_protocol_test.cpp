#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST(TestProtocol, WholeRun)
{
    const TemporaryFile file;
    Trial trial;
    trial.instrument("latency 1");
    trial.instrument("uptime 95");
    trial.run("3 -R " + file.name() + " -T");
    std::ofstream("/tmp/proto_screen.txt") << trial.display();
    std::ofstream("/tmp/proto_report.txt") << file.text();
    printf("%zu calls, %lld s\n", trial.calls.size(), (long long)virtual_time::now_us()/1000000);
}

} // namespace
