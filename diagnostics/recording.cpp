#include "diagnostics/recording.h"

#include "frame/device_call.h"
#include "frame/files/measurement_log.h"
#include "frame/live_display.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/text/format.h"
#include "frame/text/quantity_fields.h"
#include "instrument/addresses.h"
#include "instrument/module_readings.h"
#include "instrument/quantities.h"
#include "instrument/recordings.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace
{

/// Of one kind of sample.
struct SampleCounters {
    std::uint32_t received = 0;
    std::uint32_t overflows = 0; ///< samples were lost in the instrument
    std::uint32_t failed_calls = 0;
};

struct Counters {
    std::uint32_t failed_status_calls = 0;
    SampleCounters monitoring, housekeeping;

    [[nodiscard]] std::uint32_t failed_calls() const
    {
        return failed_status_calls + monitoring.failed_calls + housekeeping.failed_calls;
    }
};

constexpr RateLayout recording_rates = {
    "Polling rate:", "c/s, ", "Mean response time:", mean_in_tenths, 7, "ms, "};

// The degree sign alone stands behind a temperature here.
constexpr const char* degrees = "\xF8";

constexpr LabelledQuantity<ModuleHousekeeping> housekeeping_row[] = {
    {"Voltages: +3V3:", housekeeping::plus_3_3},
    {"5V0:", housekeeping::plus_5},
    {"24V:", housekeeping::plus_24},
    {"Temperatures: CPU:", housekeeping::cpu.in(degrees)},
    {"PSU:", housekeeping::psu.in(degrees)}};

constexpr LabelledQuantity<HeaterMonitoring> monitoring_row_1[] = {
    {"Voltage output:", monitoring::output_voltage},
    {"heater:", monitoring::heater_voltage},
    {"Current:", monitoring::current},
    {"Heater temperature:", monitoring::temperature.in(degrees)}};
constexpr LabelledQuantity<HeaterMonitoring> monitoring_row_2[] = {
    {"Power output:", monitoring::output_power},
    {"wires:", monitoring::wire_power.as_wide_as(6)},
    {"heater:", monitoring::heater_power.as_wide_as(6)},
    {"Heater resistance:", monitoring::resistance}};

/// The four rows on the screen.
class RecordingDisplay
{
public:
    /// Title and labels; the cursor stays in the last row.
    void print_labels(const std::string& module)
    {
        print_live_title("Housekeeping of " + module, ": ", true);
        rates_ = place_rates(recording_rates);
        errors_ = place_field("Errors: ", 10);
        begin_row();
        housekeeping_.place_row(housekeeping_row);
        begin_row();
        monitoring_.place_row(monitoring_row_1);
        begin_row();
        monitoring_.place_row(monitoring_row_2);
        last_row_ = console.place().row;
    }

    void show_rates(const CycleRates& rates, std::int64_t now_ms) const
    {
        rates_.show(rates, now_ms);
    }

    void show_errors(std::uint32_t count) const
    {
        errors_.show(count != 0 ? Color::bad : Color::value, count, {});
    }

    void show(const ModuleHousekeeping& sample) const { housekeeping_.show(sample); }

    void show(const HeaterMonitoring& sample) const { monitoring_.show(sample); }

    /// Goes below the last row.
    void leave() const
    {
        console.move_to({last_row_, 1});
        console.print("\r\n");
    }

private:
    static void begin_row()
    {
        console.print("\r\n");
        console.skip(2);
    }

    RateFields rates_;
    Field errors_;
    QuantityFields<Quantity<ModuleHousekeeping>> housekeeping_;
    QuantityFields<Quantity<HeaterMonitoring>> monitoring_;
    int last_row_ = 0;
};

/// Fetches a sample in up to three calls and counts those that fail. False when all did.
template <class Attempt>
bool fetch(Attempt attempt_once, SampleCounters& counters)
{
    constexpr int most_calls = 3;
    for (int calls = 0; calls < most_calls; ++calls) {
        if (!attempt_once())
            return true;
        ++counters.failed_calls;
    }
    return false;
}

/// One recording into a file that is open.
class Recording
{
public:
    Recording(MeasurementLog& log, const std::string& module) : log_(log), module_(module) {}

    /// Records until Esc. False when it failed, which has been told.
    bool run()
    {
        if (!start_file()) {
            print_failure("%s", log_error::writing);
            return false;
        }
        DisplayScope scope;
        display_.print_labels(module_);
        console.flush();
        // These two are not recorded.
        if (const Failure failed = discard_old_samples()) {
            display_.leave();
            scope.end();
            report_error(failed);
            return false;
        }
        rates_.start_ms = now_ms_ = platform::tick_ms();
        log_.start_clock(rates_.start_ms);
        const bool recorded = record_until_escape();
        draw();
        display_.leave();
        scope.end();
        if (!recorded) {
            print_failure("%s", log_error::writing);
            return false;
        }
        return finish();
    }

private:
    bool start_file()
    {
        const platform::LocalTime started = platform::local_time();
        progress("Getting housekeeping and monitoring data of %s started on %s\r\n",
                 module_.c_str(), acquisition_time_text(started).c_str());
        return log_.start(recording::heat_controller, module_, started);
    }

    static Failure discard_old_samples()
    {
        ModuleHousekeeping housekeeping;
        HeaterMonitoring monitoring;
        Failure failed = attempt_housekeeping(heat_controller, housekeeping);
        return failed ? failed : attempt_monitoring(monitoring);
    }

    /// False when the file cannot be written.
    bool record_until_escape()
    {
        DrawPacer pacer;
        while (!key_waiting() || folded(read_key()) != key::escape) {
            std::uint8_t flags = 0;
            const Failure failed = attempt(LIB(GetModuleDataReadyFlags), heat_controller, &flags);
            now_ms_ = platform::tick_ms();
            if (failed)
                ++counters_.failed_status_calls;
            else if (!take_samples(flags))
                return false;
            if (!log_.keep(now_ms_))
                return false;
            if (pacer.is_due(now_ms_))
                draw();
        }
        return true;
    }

    /// A cycle whose flags were read. False when a row cannot be written.
    bool take_samples(std::uint8_t flags)
    {
        ++rates_.cycles;
        counted_ms_ = now_ms_;
        if (flags == 0)
            return true;
        if (has_overflowed(flags, ready_bit::monitoring))
            ++counters_.monitoring.overflows;
        if (has_overflowed(flags, ready_bit::housekeeping))
            ++counters_.housekeeping.overflows;
        bool written = true;
        if (is_ready(flags, ready_bit::housekeeping))
            written = take_housekeeping();
        if (written && is_ready(flags, ready_bit::monitoring))
            written = take_monitoring();
        shown_errors_ = counters_.failed_calls();
        return written;
    }

    bool take_housekeeping()
    {
        ModuleHousekeeping sample;
        const auto attempt_once = [&] { return attempt_housekeeping(heat_controller, sample); };
        if (!fetch(attempt_once, counters_.housekeeping) || sample.valid == 0)
            return true;
        ++counters_.housekeeping.received;
        housekeeping_ = sample;
        return log_.row(now_ms_, "\t%lf\t%.3lf\t%.3lf\t%.2lf\t%.2lf\n", sample.plus_3_3,
                        sample.plus_5, sample.plus_24, sample.cpu, sample.psu);
    }

    bool take_monitoring()
    {
        HeaterMonitoring sample;
        const auto attempt_once = [&] { return attempt_monitoring(sample); };
        if (!fetch(attempt_once, counters_.monitoring) || sample.ready == 0)
            return true;
        ++counters_.monitoring.received;
        monitoring_ = sample;
        return log_.row(now_ms_, "\t\t\t\t\t\t%lf\t%lf\t%lf\t%.3lf\n", sample.output_voltage,
                        sample.heater_voltage, sample.current, sample.temperature);
    }

    void draw() const
    {
        if (rates_.cycles == 0)
            return;
        display_.show_rates(rates_, counted_ms_);
        if (housekeeping_)
            display_.show(*housekeeping_);
        if (monitoring_)
            display_.show(*monitoring_);
        if (shown_errors_)
            display_.show_errors(*shown_errors_);
        console.flush_without_waiting();
    }

    struct SummaryLine {
        RecordedCount what;
        std::uint32_t count;
    };

    [[nodiscard]] auto summary() const
    {
        const Counters& c = counters_;
        const auto& what = recording::heat_controller_counts;
        return std::to_array<SummaryLine>({{what[0], c.failed_status_calls},
                                           {what[1], c.monitoring.failed_calls},
                                           {what[2], c.housekeeping.failed_calls},
                                           {what[3], c.monitoring.overflows},
                                           {what[4], c.housekeeping.overflows},
                                           {what[5], c.monitoring.received},
                                           {what[6], c.housekeeping.received}});
    }

    /// Trailer of the file and summary on the console. False when the file cannot be written.
    bool finish()
    {
        now_ms_ = platform::tick_ms();
        const double seconds = static_cast<double>(now_ms_ - rates_.start_ms) * 0.001;
        // The file first: a terminal that was closed must not cost it.
        const bool written = write_trailer(seconds);
        print_value_line("Duration of the data acquisition: ", "%6.2lfs", seconds);
        for (const auto& [what, count] : summary()) {
            if (count == 0 && what.is_error)
                continue;
            console.print("%-34s", (std::string{what.label} + ':').c_str());
            print_value_line("", "%u", count);
        }
        if (!written)
            print_failure("%s", log_error::writing);
        return written;
    }

    bool write_trailer(double seconds)
    {
        // The cycle that Esc cut short counts.
        bool written = log_.stop(now_ms_, rates_.cycles + 1);
        for (const auto& [what, count] : summary())
            written = written && log_.print("%s:\t%u\n", what.label, count);
        if (seconds > 0.0) {
            // Kept: "data rate in samples/s" for the one, "data in samples/s" for the other.
            written = written &&
                      write_data_rate("Monitoring data rate", "Monitoring",
                                      counters_.monitoring.received / seconds) &&
                      write_data_rate("Housekeeping data", "Housekeeping",
                                      counters_.housekeeping.received / seconds);
        }
        return written && log_.store();
    }

    bool write_data_rate(const char* name, const char* kind, double rate)
    {
        return log_.print("%s in samples/s:\t%lf\n", name, rate) &&
               log_.print("%s sample period in ms:\t%lf\n", kind, rate > 0.0 ? 1000.0 / rate : 0.0);
    }

    MeasurementLog& log_;
    const std::string& module_;
    RecordingDisplay display_;
    CycleRates rates_;
    Counters counters_;
    std::int64_t now_ms_ = 0;     ///< when this cycle's flags came
    std::int64_t counted_ms_ = 0; ///< when those of the last good cycle came
    // What the display shows; none before the first.
    std::optional<ModuleHousekeeping> housekeeping_;
    std::optional<HeaterMonitoring> monitoring_;
    std::optional<std::uint32_t> shown_errors_;
};

} // namespace

void record_heat_controller(const Given& given)
{
    const std::string module = module_name(heat_controller);
    MeasurementLog log;
    if (!log.create(given.text)) {
        print_open_error(given.text);
        return;
    }
    const bool recorded = Recording{log, module}.run();
    console.clear_line();
    if (!log.close())
        print_close_error(given.text);
    if (program.quiet)
        return;
    const std::string file = printable(given.text);
    if (recorded)
        console.print("Data of %s saved to file '%s'\r\n", module.c_str(), file.c_str());
    else
        print_failure("Error recording data of %s to file '%s'", module.c_str(), file.c_str());
}
