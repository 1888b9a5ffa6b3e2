// The device library that a user puts on the search path takes the place of the one beside the
// program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/end_to_end/controller_run.h"

namespace
{

TEST(DeviceLibrary, IsTheOneOnTheSearchPath)
{
    ControllerRun run{"3 -PI -PN -T"};
    run.size = {.columns = 132, .rows = 25};
    PseudoTerminal ours{run};
    EXPECT_EQ(ours.exit_status(), 0);
    EXPECT_EQ(ours.screen.row(2), "Product identification: KOV-CTRL, Controller, Rev. 1-00");

    run.environment["LD_LIBRARY_PATH"] = OTHER_LIBRARY_FOLDER;
    PseudoTerminal other{run};
    EXPECT_EQ(other.exit_status(), 0);
    EXPECT_EQ(other.screen.row(2), "Product identification: Another library");
    EXPECT_THAT(other.screen.row(3), testing::EndsWith("Error at COM_KOV_CTRL_GetProductNo: "
                                                       "error of another library"));
}

} // namespace
