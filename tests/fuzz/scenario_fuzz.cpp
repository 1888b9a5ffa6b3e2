// Any text as a scenario: a wrong line is refused with a reason, and whatever a good one sets, the
// instrument answers.

#include "devlib/COM-KOV-CTRL.h"
#include "simulator/simulator.h"
#include "tests/fuzz/target.h"

#include <algorithm>
#include <array>
#include <string>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    simulator::reset_for_test();
    (void)COM_KOV_CTRL_Open(3);
    for (std::string_view text = as_text(data, size); !text.empty();) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        std::string problem;
        require(simulator::apply(text.substr(0, length), problem) || !problem.empty());
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    std::uint16_t word = 0;
    std::uint8_t flag = 0;
    std::array<double, 9> values = {};
    std::array<char, 85> name = {};
    (void)COM_KOV_CTRL_GetState(&word);
    (void)COM_KOV_CTRL_GetProductID(name.data());
    (void)COM_KOV_CTRL_GetModuleState(1, &word);
    (void)COM_KOV_CTRL_GetHousekeeping(&values[0], &values[1], &values[2], &values[3], &values[4]);
    (void)COM_KOV_CTRL_GetHVsupplyOutputVoltage(1, &flag, values.data());
    (void)COM_KOV_CTRL_Close();
    return 0;
}
