#include "protocol/test_protocol.h"

#include "frame/device_call.h"
#include "frame/format.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "instrument/controller_readings.h"
#include "instrument/status_words.h"
#include "protocol/product_report.h"
#include "protocol/report.h"
#include "protocol/sampling.h"
#include "protocol/steps.h"

#include <exception>

namespace
{

/// Waits until the device has been up long enough. The time shown meanwhile has no minutes.
bool wait_for_uptime(Report& report)
{
    constexpr std::uint32_t needed_seconds = 100;
    RunTimes uptime;
    if (!succeeded(attempt_uptime(uptime)))
        return false;
    if (uptime.seconds < needed_seconds) {
        console.print("Waiting for uptime of %us, press ", needed_seconds);
        console.print(Color::value, "SPACE");
        console.print(" to abort...\n");
        report.file_only(formatted("\nWaiting for uptime of %us...", needed_seconds));
        report.flush();
        RunningLine line{"Device uptime"};
        while (uptime.seconds < needed_seconds) {
            line.show(formatted("%u.%02u sec.", uptime.seconds, uptime.milliseconds / 10U));
            constexpr std::int64_t interval_ms = 50;
            if (!wait_until(platform::tick_ms() + interval_ms, true)) {
                line.clear();
                report_stop(report);
                return false;
            }
            if (!succeeded(attempt_uptime(uptime)))
                return false;
        }
        line.clear();
    }
    report.item({.label = "Device uptime", .value = uptime.text()});
    return true;
}

/// In the file only, or on the console as well.
bool report_uptime(Report& report, bool on_console)
{
    RunTimes uptime;
    if (!succeeded(attempt_uptime(uptime)))
        return false;
    if (on_console) {
        report.item({.label = "Device uptime", .value = uptime.text()});
    } else {
        report.file_only("Device uptime:\t" + uptime.text());
        report.end_section();
    }
    return true;
}

bool purge_communication_port(Report& report)
{
    report.paragraph("Trying to restore the communication...");
    const std::int64_t start_ms = platform::tick_ms();
    if (!call(LIB(Purge)))
        return false;
    report.text(formatted("Communication has been restored within %.1lfs",
                          static_cast<double>(platform::tick_ms() - start_ms) * 0.001));
    return true;
}

/// For what must not keep the restoring from its turn, not even when memory runs out.
template <class Step>
bool guarded(Step step)
{
    try {
        return step();
    } catch (const std::exception&) {
        return false;
    }
}

bool restore_once(const ConfigRecord& saved)
{
    (void)guarded([] {
        // Kept: to give the device its settings is "Saving", to read them "Loading".
        progress("Saving current configuration data:\n");
        return true;
    });
    return guarded([&] { return call(LIB(SetCurrentConfig), &saved); });
}

/// Gives the device its settings back. The last resort is to switch it off.
bool restore_configuration(Report& report, const ConfigRecord& saved)
{
    const bool at_once = restore_once(saved);
    if (!at_once) {
        (void)guarded([&] { return purge_communication_port(report); });
        if (!restore_once(saved)) {
            (void)guarded([] { return call(LIB(SetEnable), std::uint8_t{0}); });
            report.text("The configuration could not be restored, outputs may still be on!",
                        Color::bad);
            return false;
        }
    }
    report.text("Current configuration data has been restored");
    return at_once; // a failure stays a failure
}

/// Runs the steps on settings that are restored behind them, whatever comes of the steps.
bool run_on_saved_settings(Report& report, const ProductData& data)
{
    progress("Loading current configuration data:\n");
    ConfigRecord saved{};
    if (!call(LIB(GetCurrentConfig), &saved))
        return false;
    report.text("Current configuration data has been retrieved");
    const platform::ProtectedRun until_restored;
    const bool passed = guarded([&] {
        return report_uptime(report, false) && may_go_on(report) && run_steps(report, data);
    });
    report.indent(false);
    const platform::HeldOutput restore_first;
    if (!passed)
        (void)guarded([&] { return purge_communication_port(report); });
    return restore_configuration(report, saved) && passed;
}

bool run_protocol(Report& report)
{
    ProductData data;
    if (!report_product_data(report, data))
        return false;
    if (data.overall_state != overall_state::on && data.overall_state != overall_state::stand_by) {
        report.end_section();
        report.text("Error detected, continuation not possible!", Color::bad);
        return false;
    }
    return wait_for_uptime(report) && may_go_on(report) && run_on_saved_settings(report, data) &&
           report_uptime(report, true) && report.is_good();
}

} // namespace

void create_test_protocol(const Given& given)
{
    progress("Creating test protocol:\n");
    Report report;
    if (!report.open(given.text)) {
        print_failure("Cannot open the data file %s", printable(given.text).c_str());
        return;
    }
    const std::int64_t start_ms = platform::tick_ms();
    hide_typed_keys(); // they would be echoed into the lines that are rewritten
    console.show_cursor(false);
    const bool passed = run_protocol(report);
    console.show_cursor(true);
    if (passed) {
        // Rounded before it is split: there is no "1:60.0s".
        const std::int64_t tenths = (platform::tick_ms() - start_ms + 50) / 100;
        const double seconds = static_cast<double>(tenths) / 10.0;
        const std::int64_t minutes = tenths / 600;
        report.end_section();
        report.text(formatted("Test protocol successfully completed within %.1lfs (%u:%.1lfs)",
                              seconds, static_cast<unsigned>(minutes),
                              static_cast<double>(tenths % 600) / 10.0),
                    Color::good);
    } else {
        report.end_section();
        report.text("*** Test protocol aborted due to an error ***", Color::bad);
    }
    const bool told = !report.is_good();
    if (!report.close(passed) && !told)
        print_failure("Cannot close the data file %s", printable(given.text).c_str());
}
