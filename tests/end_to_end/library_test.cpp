// The device library that a user puts on the search path takes the place of the one beside the
// program.
#include <gtest/gtest.h>

#include "tests/end_to_end/controller_run.h"

namespace
{

TEST(DeviceLibrary, IsTheOneOnTheSearchPath)
{
    ControllerRun run{"3 -PI -T"};
    PseudoTerminal ours{run};
    EXPECT_EQ(ours.exit_status(), 0);
    EXPECT_EQ(ours.screen.row(2), "Product identification: KOV-CTRL, Controller, Rev. 1-00");

    run.environment["LD_LIBRARY_PATH"] = OTHER_LIBRARY_FOLDER;
    PseudoTerminal other{run};
    EXPECT_EQ(other.exit_status(), 0);
    EXPECT_EQ(other.screen.row(2), "Product identification: Another library");
}

} // namespace
