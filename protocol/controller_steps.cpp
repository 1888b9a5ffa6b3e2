#include "protocol/controller_steps.h"

#include <numeric>
#include <string>

#include "frame/device_call.h"
#include "frame/platform.h"
#include "modules/readings.h"
#include "protocol/sampling.h"

namespace
{

bool report_enabled(Report& report)
{
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return false;
    report.text(std::string{"Device is "} + (enabled != 0 ? "enabled" : "disabled"));
    return may_go_on(report);
}

bool set_enable_and_check(Report& report, bool enable)
{
    constexpr std::int64_t settling_ms = 1'000;
    report.paragraph(enable ? "Enabling the device..." : "Disabling the device...");
    if (!call(LIB(SetEnable), static_cast<std::uint8_t>(enable)) ||
        !wait(report, settling_ms, SpaceKey::ignored))
        return false;
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return false;
    const std::string state = enable ? "enabled" : "disabled";
    if ((enabled != 0) != enable) {
        report.result("Device could not be " + state, Color::bad);
        return false;
    }
    report.result("Device has been " + state, Color::label);
    return may_go_on(report);
}

/// Times how long transfers of a text take.
bool measure_transfers(Report& report, const char* label, const char* sent)
{
    constexpr int transfers = 10;
    Statistics times;
    RunningLine line{label};
    for (int number = 1; number <= transfers; ++number) {
        line.show(formatted("#%d/%d", number, transfers));
        const std::int64_t start_ms = platform::tick_ms();
        const char* failed = attempt(LIB(Test), sent);
        times.add(static_cast<double>(platform::tick_ms() - start_ms));
        if (failed != nullptr) {
            report_error_below(failed);
            return false;
        }
        if (platform::stop_signal() != 0) {
            line.leave();
            return may_go_on(report);
        }
    }
    line.clear();
    const std::string result =
        formatted("%.2lfms (%.0lf..%.0lfms)", times.mean(), times.smallest(), times.largest());
    report.item({.label = label, .value = result});
    return may_go_on(report);
}

bool measure_communication(Report& report)
{
    // 64 characters, from the blank on.
    std::string block(64, '\0');
    std::iota(block.begin(), block.end(), ' ');
    report.end_section();
    return measure_transfers(report, "Measuring communication response time", "") &&
           measure_transfers(report, "Measuring communication transfer time", block.c_str());
}

bool measure_cpu(Report& report)
{
    report.end_section();
    return take_series(
        report, "CPU data", {},
        {.what = "CPU data",
         .channels = {{"load", &quantity::percent_of_one}, {"frequency", &quantity::megahertz}},
         .count = 10,
         .fetch = [](std::span<double> values) {
             return Sample{attempt(LIB(GetCPUdata), &values[0], &values[1])};
         }});
}

bool measure_housekeeping(Report& report)
{
    report.end_section();
    return take_series(report, "Housekeeping data", {},
                       {.what = "housekeeping data",
                        .channels = {{"3V3", &quantity::volts},
                                     {"5V0", &quantity::volts},
                                     {"24V", &quantity::volts},
                                     {"CPU", &quantity::degrees},
                                     {"PSU", &quantity::degrees}},
                        .count = 20,
                        .ready_bit = ready_bit::controller_housekeeping,
                        .fetch = [](std::span<double> values) {
                            return Sample{attempt(LIB(GetHousekeeping), &values[2], &values[1],
                                                  &values[0], &values[3], &values[4])};
                        }});
}

bool measure_fan(Report& report)
{
    constexpr const char* title = "Fan data";
    bool has_failed = false;
    SampleSource source{.what = "fan data",
                        .channels = {{"speed set", &quantity::rpm},
                                     {"measured", &quantity::rpm},
                                     {"PWM control", &quantity::percent_of_one}},
                        .count = 10,
                        .ready_bit = ready_bit::fan,
                        .fetch = [&](std::span<double> values) {
                            std::uint8_t failed = 0;
                            std::uint16_t reserved = 0;
                            std::uint16_t set_speed = 0;
                            std::uint16_t measured_speed = 0;
                            float pwm = 0;
                            const char* error = attempt(LIB(GetFanData), &failed, &reserved,
                                                        &set_speed, &measured_speed, &pwm);
                            has_failed = has_failed || failed != 0;
                            values[0] = set_speed;
                            values[1] = measured_speed;
                            values[2] = static_cast<double>(pwm);
                            return Sample{error};
                        }};
    report.end_section();
    if (!collect(report, title, {}, {&source, 1}))
        return false;
    report_series(report, title, source,
                  {{.label = "state",
                    .value = has_failed ? "Fail" : "OK",
                    .color = has_failed ? Color::bad : Color::good}});
    return may_go_on(report);
}

} // namespace

bool enable_device_and_check(Report& report)
{
    return set_enable_and_check(report, true);
}

bool run_controller_steps(Report& report)
{
    return report_enabled(report) && set_enable_and_check(report, true) &&
           set_enable_and_check(report, false) && measure_communication(report) &&
           measure_cpu(report) && measure_housekeeping(report) && measure_fan(report);
}
