#include "frame/device_library.h"
#include "tests/companion/companion_trial.h"
#include "tests/support/trial.h"

namespace
{

TEST(CompanionLibrary, TellsWhatTheUtilityWouldLoad)
{
    const struct {
        platform::LibraryFault fault;
        const char* missing;
        int status;
        std::string told;
    } cases[] = {
        {platform::LibraryFault::none, nullptr, 0, "Version: 1-05\n"},
        {platform::LibraryFault::none, "COM_KOV_CTRL_Purge", 1,
         "Version: 1-05\nIt lacks COM_KOV_CTRL_Purge\n"},
        {platform::LibraryFault::empty, nullptr, 3, "It is not used: it is empty\n"},
    };
    for (const auto& c : cases) {
        const Trial trial;
        forget_device_library();
        virtual_platform.library_failure.fault = c.fault;
        if (c.missing != nullptr)
            virtual_platform.missing_functions = {c.missing};
        const KovRun ran = run_kov({"library"});
        EXPECT_EQ(ran.status, c.status);
        EXPECT_EQ(ran.out,
                  "Device library: /usr/bin/libCOM-KOV-CTRL.so, beside the program\n" + c.told);
    }
    forget_device_library();
}

} // namespace
