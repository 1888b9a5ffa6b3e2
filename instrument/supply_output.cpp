#include "instrument/supply_output.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "instrument/module_readings.h"

Failure attempt_ranges(unsigned address, MeasurementRanges& ranges)
{
    return attempt(LIB(GetHVsupplyMeasRanges), address, &ranges.negative, &ranges.high);
}

Failure attempt_to_set_ranges(unsigned address, MeasurementRanges ranges)
{
    // The library may have given another value than 1.
    const std::uint8_t negative = ranges.negative != 0 ? 1 : 0;
    const std::uint8_t high = ranges.high != 0 ? 1 : 0;
    return attempt(LIB(SetHVsupplyMeasRanges), address, negative, high);
}

Failure attempt_target_voltage(unsigned address, double& volts)
{
    return attempt(LIB(GetHVsupplyTargetOutputVoltage), address, &volts);
}

Failure attempt_pwm_parameters(unsigned address, PwmParameters& parameters)
{
    PwmParameters& p = parameters;
    return attempt(LIB(GetHVsupplyParamsPWM), address, &p.period, &p.width, &p.phase_measured,
                   &p.phase_set, &p.voltage_set, &p.voltage_measured, &p.active, &p.data_ready);
}

Failure attempt_output(unsigned address, std::uint8_t data_ready, MeasurementRanges ranges,
                       OutputValues& output, NewOutput& news)
{
    news = {};
    OutputMeasurement measured;
    if (is_ready(data_ready, ready_bit::output_voltage)) {
        if (const Failure failed = attempt_output_voltage(address, measured))
            return failed;
        if (measured.valid != 0) {
            output.voltage = measured.value;
            output.voltage_ranges = ranges;
            output.has_voltage = news.voltage = true;
            news.voltage_ms = platform::tick_ms();
        }
    }
    if (is_ready(data_ready, ready_bit::output_current)) {
        if (const Failure failed = attempt_output_current(address, measured))
            return failed;
        if (measured.valid != 0) {
            output.current = measured.value;
            output.current_ranges = ranges;
            output.has_current = news.current = true;
            news.current_ms = platform::tick_ms();
        }
    }
    return {};
}
