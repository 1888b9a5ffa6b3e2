#include "protocol/controller_steps.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/text/format.h"
#include "instrument/controller_readings.h"
#include "instrument/words.h"
#include "protocol/report/schedule.h"
#include "protocol/sampling.h"

#include <numeric>
#include <string>
#include <utility>

namespace
{

bool report_enabled(Report& report)
{
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return false;
    report.text(std::string{report_text::device_is} + enabled_or_disabled(enabled != 0).text);
    return may_go_on(report);
}

bool set_enable_and_check(Report& report, bool enable)
{
    report.paragraph(enable ? report_text::enabling : report_text::disabling);
    if (!call(LIB(SetEnable), static_cast<std::uint8_t>(enable)) ||
        !wait(report, settling_ms::enabling, SpaceKey::ignored))
        return false;
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return false;
    const std::string state = enabled_or_disabled(enable).text;
    if ((enabled != 0) != enable) {
        report.result("Device could not be " + state, Color::bad);
        return false;
    }
    report.result(report_text::device_has_been + state, Color::label);
    return may_go_on(report);
}

/// Times how long transfers of a text take.
bool measure_transfers(Report& report, const char* label, const char* sent)
{
    constexpr int transfers = timed_transfers;
    Statistics times;
    RunningLine line{report, label};
    for (int number = 1; number <= transfers; ++number) {
        line.show(formatted("#%d/%d", number, transfers));
        const std::int64_t start_ms = platform::tick_ms();
        const Failure failed = attempt(LIB(Test), sent);
        times.add(static_cast<double>(platform::tick_ms() - start_ms));
        if (failed) {
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
    return measure_transfers(report, report_text::response_time, "") &&
           measure_transfers(report, report_text::transfer_time, block.c_str());
}

bool measure_cpu(Report& report)
{
    SampleSource source{
        .what = "CPU data", .channels = {}, .count = series::cpu.count, .fetch = {}};
    sample_records<CpuData>(source, channels::cpu,
                            [](CpuData& record) { return Sample{attempt_cpu_data(record)}; });
    report.end_section();
    return take_series(report, report_text::cpu_data, {}, std::move(source));
}

bool measure_housekeeping(Report& report)
{
    SampleSource source{.what = "housekeeping data",
                        .channels = {},
                        .count = series::housekeeping.count,
                        .ready_bit = controller_ready_bit::housekeeping,
                        .fetch = {}};
    sample_records<ControllerHousekeeping>(
        source, channels::controller_housekeeping, [](ControllerHousekeeping& record) {
            return Sample{attempt_controller_housekeeping(record)};
        });
    report.end_section();
    return take_series(report, report_text::housekeeping, {}, std::move(source));
}

bool measure_fan(Report& report)
{
    constexpr const char* title = report_text::fan_data;
    bool has_failed = false;
    SampleSource source{.what = "fan data",
                        .channels = {{"speed set", &quantity::rpm},
                                     {"measured", &quantity::rpm},
                                     {"PWM control", &quantity::percent_of_one}},
                        .count = series::fan.count,
                        .ready_bit = controller_ready_bit::fan,
                        .fetch = [&](std::span<double> values) {
                            FanData fan;
                            const Sample sample{attempt_fan_data(fan)};
                            has_failed = has_failed || fan.failed != 0;
                            values[0] = fan.set_speed;
                            values[1] = fan.measured_speed;
                            values[2] = static_cast<double>(fan.pwm);
                            return sample;
                        }};
    report.end_section();
    if (!collect(report, title, {}, {&source, 1}))
        return false;
    report_series(report, title, source,
                  {{.label = report_text::state,
                    .value = has_failed ? report_text::fan_failed
                                        : report_text::fan_good, // Kept: with a capital letter.
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
