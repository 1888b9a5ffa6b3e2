#include "modules/voltage_tuning.h"

#include "frame/device_call.h"
#include "frame/files/measurement_log.h"
#include "frame/live_display.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/scan_codes.h"
#include "frame/text/format.h"
#include "instrument/addresses.h"
#include "instrument/recordings.h"
#include "modules/output.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace
{

/// What a key alone adds to the target.
struct StepKey {
    ScanCodes codes;
    double volts;
};

constexpr StepKey step_keys[] = {
    {scan_code::up, 0.001},
    {scan_code::down, -0.001},
    {scan_code::page_up, 10.0},
    {scan_code::page_down, -10.0},
};

std::optional<double> step_of(int key)
{
    constexpr double with_alt = 10.0, with_control = 100.0;
    for (const auto& [codes, volts] : step_keys) {
        if (key == key::extended(codes.plain))
            return volts;
        if (key == key::extended(codes.alt))
            return volts * with_alt;
        if (key == key::extended(codes.control))
            return volts * with_control;
    }
    return std::nullopt;
}

/// The next target. A target that is off counts as 0; the limits are the same for every supply.
double stepped(double target, double step)
{
    constexpr double highest_volts = 3000.0;
    const double from = target >= 0.0 ? target : 0.0;
    return std::clamp(from + step, 0.0, highest_volts);
}

/// The file's name without its ending.
std::string recording_name(const std::string& module, const platform::LocalTime& time)
{
    return formatted("%s %04d-%02d-%02d %02d.%02d.%02d", module.c_str(), time.year, time.month,
                     time.day, time.hour, time.minute, time.second);
}

/// What a display calls that switches; without it high voltage might be on that no key takes away.
constexpr std::array functions_of_tuning = {
    LIB(GetHVsupplyMeasRanges).row,          LIB(SetHVsupplyMeasRanges).row,
    LIB(GetHVsupplyTargetOutputVoltage).row, LIB(SetHVsupplyTargetOutputVoltage).row,
    LIB(SetModuleActivationState).row,       LIB(GetHVsupplyParamsPWM).row,
    LIB(GetHVsupplyOutputVoltage).row,       LIB(GetHVsupplyOutputCurrent).row};

/// One run of the display.
class Tuning
{
public:
    explicit Tuning(unsigned address) : address_(address), name_(module_name(address)) {}

    void run(bool continuous);

private:
    void print_labels(LiveFields& fields);
    void print_title(bool continuous);
    [[nodiscard]] Reading read(OutputData& shown);

    [[nodiscard]] Failure take_key(int key);
    [[nodiscard]] Failure step_target(double step);
    [[nodiscard]] Failure activate(bool on);

    void start_saving();
    [[nodiscard]] std::string file_name(const platform::LocalTime& time);
    void stop_saving();
    void save(NewOutput news);
    /// Notes what was wrong with the file first: the display is over then.
    void end_unless(bool written, const char* error);
    /// Tells how to start saving or, with a file, how to stop it.
    void print_saving_prompt(const std::string& file = {});

    const unsigned address_;
    const std::string name_;
    MeasurementRanges ranges_;
    OutputData latest_;
    Failure target_failed_;
    std::uint64_t cycles_ = 0;
    MeasurementLog log_;
    std::string last_name_;            ///< of the latest recording
    unsigned same_name_ = 0;           ///< recordings that began in its second
    const char* file_error_ = nullptr; ///< log_error

    Place saving_prompt_;
    OutputDataFields places_;
};

void Tuning::print_title(bool continuous)
{
    console.print("Operating parameters of %s", name_.c_str());
    if (!continuous) {
        console.print(": \r\n\r\n");
        return;
    }
    // The keys are told in quiet mode, too: this display is made of them.
    print_how_to_quit();
    console.print(", ");
    print_range_keys();
    console.print("\r\n vertical arrows/");
    print_key_pair("PgUp", "PgDn", " to adjust voltage fine/coarse, (");
    print_key_pair("Alt", "Ctrl", " increases the steps), ");
    print_key_pair("A", "a", " for activate/deactivate HVC, \r\n ");
    saving_prompt_ = console.place();
    print_saving_prompt();
    console.print("\r\n\r\n\r\n");
}

void Tuning::print_labels(LiveFields& fields)
{
    constexpr int columns_to_next = 25;
    constexpr int columns_to_active = 19;
    constexpr int first_column = 4;
    print_title(fields.continuous);
    const int last_row = console.place().row;
    const auto place_at = [](Place place, const char* label, int columns = output_columns) {
        console.move_to(place);
        return place_field(label, columns);
    };
    const auto behind = [](const Field& field) { return field.place().right(columns_to_next); };
    const Place upper = {last_row - 1, first_column};
    console.move_to(upper.up(1));
    fields.place_rates(fine_rates_in_header);
    places_.voltage = place_at(upper, "Voltage: ", measured_columns);
    places_.current = place_at(behind(places_.voltage), "Current: ", measured_columns);
    places_.period = place_at(behind(places_.current), "PWM Period: ");
    places_.measured = place_at(upper.up(-1), "Measured: ");
    places_.set = place_at(behind(places_.voltage).up(-1), "Set: ");
    places_.target = place_at(behind(places_.current).up(-1), "Target: ");
    places_.active = place_at(places_.target.place().right(columns_to_active), "Active: ", 3);
    target_failed_ = attempt_target_voltage(address_, latest_.target);
    if (!target_failed_)
        show_target(places_.target, latest_.target);
    console.move_to({last_row, 1});
    console.flush();
    if (fields.continuous)
        flush_keys(); // nothing is switched by what was typed before anybody could see this
}

Reading Tuning::read(OutputData& shown)
{
    if (target_failed_)
        return {target_failed_};
    if (file_error_ != nullptr)
        return Reading::over();
    PwmParameters& pwm = latest_.pwm;
    if (const Failure failed = with_repeat([&] { return attempt_pwm_parameters(address_, pwm); }))
        return {failed};
    ++cycles_;
    NewOutput news;
    const Failure failed = attempt_output(address_, pwm.data_ready, ranges_, latest_.output, news);
    shown = latest_;
    if (log_.is_open())
        save(news);
    return Reading::partly(failed);
}

Failure Tuning::take_key(int key)
{
    if (file_error_ != nullptr)
        return {}; // it is over
    const bool ends_something = key == 'a' || key == 's' || key == key::escape;
    if (!ends_something && escape_waiting())
        return {}; // keys held down while the library was busy
    if (const std::optional<double> step = step_of(key))
        return step_target(*step);
    if (change_ranges(folded(key), ranges_))
        return attempt_to_set_ranges(address_, ranges_);
    switch (key) {
    case 'A':
    case 'a':
        return activate(key == 'A');
    case 'S':
        if (!log_.is_open())
            start_saving();
        break;
    case 's':
    case key::escape:
        if (log_.is_open())
            stop_saving();
        break;
    default:
        break;
    }
    if (key == key::escape)
        flush_keys();
    return {};
}

Failure Tuning::step_target(double step)
{
    latest_.target = stepped(latest_.target, step);
    return attempt(LIB(SetHVsupplyTargetOutputVoltage), address_, latest_.target);
}

Failure Tuning::activate(bool on)
{
    return attempt(LIB(SetModuleActivationState), address_, static_cast<std::uint8_t>(on));
}

void Tuning::end_unless(bool written, const char* error)
{
    if (!written && file_error_ == nullptr)
        file_error_ = error;
}

void Tuning::print_saving_prompt(const std::string& file)
{
    console.move_to(saving_prompt_);
    console.print(Color::value, file.empty() ? "S" : "s");
    if (file.empty()) {
        console.print(" to start saving data:");
    } else {
        console.print(" to stop saving data to file '");
        console.print(Color::value, "%s", file.c_str());
        console.print(":"); // kept: no quote behind the name
    }
    console.clear_to_end_of_line();
}

std::string Tuning::file_name(const platform::LocalTime& time)
{
    const std::string name = recording_name(name_, time);
    same_name_ = name == last_name_ ? same_name_ + 1 : 1;
    last_name_ = name;
    return name + (same_name_ > 1 ? formatted(" (%u)", same_name_) : "") + ".txt";
}

void Tuning::start_saving()
{
    const platform::LocalTime now = platform::local_time();
    log_.start_clock(platform::tick_ms());
    const std::string file = file_name(now);
    if (!log_.create(file.c_str())) {
        end_unless(false, log_error::opening);
        return;
    }
    end_unless(log_.start(recording::hv_supply, name_, now), log_error::writing);
    if (file_error_ == nullptr)
        print_saving_prompt(file);
}

void Tuning::stop_saving()
{
    // The cycles are those of the display since its start, not only those of the saving.
    end_unless(log_.stop(platform::tick_ms(), cycles_ + 1), log_error::writing);
    end_unless(log_.close(), log_error::closing);
    if (file_error_ == nullptr)
        print_saving_prompt();
}

void Tuning::save(NewOutput news)
{
    const PwmParameters& pwm = latest_.pwm;
    const OutputValues& output = latest_.output;
    constexpr double nano = 1e9;
    const double width = pwm.width * nano;
    const double period = pwm.period * nano;
    const double phase = pwm.phase_measured * nano;
    bool written = true;
    if (news.voltage)
        written = log_.row(news.voltage_ms, "\t%lf\t%lf\t%lf\t\t%lf\n", width, period,
                           output.voltage, phase);
    if (news.current)
        written = written && log_.row(news.current_ms, "\t%lf\t%lf\t\t%lf\t%lf\n", width, period,
                                      output.current * nano, phase);
    end_unless(written && log_.keep(platform::tick_ms()), log_error::writing);
}

void Tuning::run(bool continuous)
{
    progress("Getting operating parameters of %s:\r\n", name_.c_str());
    if (continuous && !succeeded(first_missing(functions_of_tuning)))
        return;
    if (!succeeded(attempt_ranges(address_, ranges_)))
        return;
    run_live_display<OutputData>(
        {.continuous = continuous, .on_key = [this](int key) { return take_key(key); }},
        [this](LiveFields& fields) { print_labels(fields); },
        [this](OutputData& shown) { return read(shown); },
        [this](const OutputData& shown) { places_.show(shown); });
    if (log_.is_open()) // something failed: the rows stay, without a trailer
        end_unless(log_.close(), log_error::closing);
    if (file_error_ != nullptr)
        print_failure("%s", file_error_);
}

} // namespace

void tune_voltage(const Given& given)
{
    Tuning{given.address}.run(given.capital);
}
