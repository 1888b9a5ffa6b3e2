#include "protocol/steps.h"

#include "instrument/addresses.h"
#include "protocol/controller_steps.h"
#include "protocol/heater_steps.h"
#include "protocol/module_steps.h"
#include "protocol/report/schedule.h"
#include "protocol/supply_steps.h"

#include <functional>
#include <vector>

namespace
{

struct Part {
    std::int64_t expected_ms;
    std::function<bool()> run;
};

/// All of them in their order, as far as the instrument has what they are for.
std::vector<Part> parts_of_run(Report& report, const ProductData& data)
{
    std::vector<Part> parts;
    parts.push_back({expected_ms::controller, [&] { return run_controller_steps(report); }});
    parts.push_back({data.has_base_unit_of_its_kind() ? expected_ms::unit : 0, [&] {
                         return run_base_unit_steps(report, data);
                     }}); // tells when it is left out
    for (unsigned slot = 0; slot <= highest_slot; ++slot) {
        const std::int64_t idle =
            slot == heat_controller ? expected_ms::idle_heater : expected_ms::idle_supply;
        parts.push_back({data.fits(slot) ? idle : 0,
                         [&, slot] { return run_idle_slot_steps(report, data, slot); }});
    }
    parts.push_back({settling_ms::enabling, [&] { return enable_device_and_check(report); }});
    if (data.fits(heat_controller))
        parts.push_back({expected_ms::heater, [&] { return run_heater_steps(report, data); }});
    for (unsigned slot = 1; slot <= highest_slot; ++slot) {
        if (data.fits(slot))
            parts.push_back({expected_ms::supply(TargetSteps{data.voltage_range(slot)}.count),
                             [&, slot] { return run_supply_steps(report, data, slot); }});
    }
    return parts;
}

} // namespace

std::int64_t expected_steps_ms(Report& report, const ProductData& data)
{
    std::int64_t sum = 0;
    for (const Part& part : parts_of_run(report, data))
        sum += part.expected_ms;
    return sum;
}

bool run_steps(Report& report, const ProductData& data)
{
    std::int64_t left_ms = expected_steps_ms(report, data);
    for (const Part& part : parts_of_run(report, data)) {
        report.expect_end_in(left_ms);
        if (!part.run())
            return false;
        left_ms -= part.expected_ms;
    }
    return true;
}
