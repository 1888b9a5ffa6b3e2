#include "protocol/test_protocol.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"
#include "frame/text/format.h"
#include "instrument/controller_readings.h"
#include "instrument/status_words.h"
#include "protocol/needed_functions.h"
#include "protocol/product_report.h"
#include "protocol/report/report.h"
#include "protocol/restoring.h"
#include "protocol/sampling.h"
#include "protocol/steps.h"

namespace
{

/// Waits until the device has been up long enough. The time shown meanwhile has no minutes.
bool wait_for_uptime(Report& report, std::int64_t expected_steps_ms)
{
    RunTimes uptime;
    if (!succeeded(attempt_uptime(uptime)))
        return false;
    if (uptime.seconds < needed_uptime_seconds) {
        console.print("%s%us, press ", report_text::waiting_for_uptime, needed_uptime_seconds);
        console.print(Color::value, "SPACE");
        console.print(" to abort...\n");
        report.end_section();
        report.file_only(
            formatted("%s%us...", report_text::waiting_for_uptime, needed_uptime_seconds));
        report.flush();
        flush_keys(); // what was typed before was not meant for this
        report.expect_end_in((needed_uptime_seconds - uptime.seconds) * std::int64_t{1'000} +
                             expected_steps_ms);
        RunningLine line{report, report_text::uptime};
        while (uptime.seconds < needed_uptime_seconds) {
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
    report.item({.label = report_text::uptime, .value = uptime.text()});
    return true;
}

/// In the file only, or on the console as well.
bool report_uptime(Report& report, bool on_console)
{
    RunTimes uptime;
    if (!succeeded(attempt_uptime(uptime)))
        return false;
    if (on_console) {
        report.item({.label = report_text::uptime, .value = uptime.text()});
    } else {
        report.file_only(formatted("%s:\t%s", report_text::uptime, uptime.text().c_str()));
        report.end_section();
    }
    return true;
}

bool run_protocol(Report& report, InstrumentState& state)
{
    ProductData data;
    if (!report_product_data(report, data))
        return false;
    if (data.overall_state != overall_state::on && data.overall_state != overall_state::stand_by) {
        report.end_section();
        report.text("Error detected, continuation not possible!", Color::bad);
        return false;
    }
    const auto steps = [&] {
        return report_uptime(report, false) && may_go_on(report) && run_steps(report, data);
    };
    return wait_for_uptime(report, expected_steps_ms(report, data)) && may_go_on(report) &&
           run_on_saved_settings(report, state, steps) && report_uptime(report, true) &&
           report.is_good();
}

void report_success(Report& report, std::int64_t duration_ms)
{
    // Rounded before it is split: there is no "1:60.0s".
    const std::int64_t tenths = (duration_ms + 50) / 100;
    report.text(formatted("%s%.1lfs (%u:%.1lfs)", report_text::completed,
                          static_cast<double>(tenths) / 10.0, static_cast<unsigned>(tenths / 600),
                          static_cast<double>(tenths % 600) / 10.0),
                Color::good);
}

/// What ended the test, and how it leaves the instrument.
void report_abort(Report& report, const FirstFailure& failure, InstrumentState state)
{
    if (failure.is_noted()) { // the console has the error report
        report.file_only(report_text::first_error + failure.function() + ": " +
                         latin1_text(failure.message()));
        report.end_section();
    }
    report.text(report_text::aborted, Color::bad);
    report_state(report, state);
}

} // namespace

void create_test_protocol(const Given& given)
{
    progress("Creating test protocol:\n");
    if (!succeeded(first_missing(functions_of_acceptance_test)))
        return; // a report of that name stays as it is
    Report report;
    if (!report.open(given.text)) {
        if (platform::stop_signal() != 0)
            print_interrupted(); // while it waited for the reader of a pipe
        else
            print_failure("Cannot open the data file %s", printable(given.text).c_str());
        return;
    }
    const std::int64_t start_ms = platform::tick_ms();
    hide_typed_keys(); // they would be echoed into the lines that are rewritten
    console.show_cursor(false);
    const FirstFailure failure;
    InstrumentState state = InstrumentState::untouched;
    const bool passed = run_protocol(report, state);
    console.show_cursor(true);
    report.end_section();
    if (passed)
        report_success(report, platform::tick_ms() - start_ms);
    else
        report_abort(report, failure, state);
    const bool told = !report.is_good();
    if (!report.close(passed) && !told)
        print_failure("Cannot close the data file %s", printable(given.text).c_str());
    repeat_alarm(); // so that nobody overlooks it above what the file had to tell
}
