#include "instrument/module_readings.h"

#include "frame/device_call.h"
#include "instrument/addresses.h"

Failure attempt_housekeeping(unsigned address, ModuleHousekeeping& record)
{
    switch (address) {
    case base_unit:
        return attempt(LIB(GetBaseHousekeeping), &record.valid, &record.plus_3_3, &record.cpu);
    case heat_controller:
        return attempt(LIB(GetHeatCtrlHousekeeping), &record.valid, &record.plus_3_3, &record.cpu,
                       &record.plus_5, &record.plus_24, &record.psu);
    default:
        return attempt_hv_supply_housekeeping(address, record);
    }
}

Failure attempt_hv_supply_housekeeping(unsigned address, ModuleHousekeeping& record)
{
    return attempt(LIB(GetHVsupplyHousekeeping), address, &record.valid, &record.plus_3_3,
                   &record.cpu, &record.plus_5, &record.plus_24, &record.minus_22, &record.plus_18,
                   &record.minus_18, &record.vc, &record.analog_ground);
}

std::optional<double> HeaterMonitoring::heater_resistance() const
{
    constexpr double smallest_current = 0.1; // A; itself too small
    if (!(current > smallest_current))
        return std::nullopt;
    return heater_voltage / current;
}

Failure attempt_monitoring(HeaterMonitoring& record)
{
    return attempt(LIB(GetHeatCtrlMonitoring), &record.ready, &record.output_voltage,
                   &record.heater_voltage, &record.current, &record.temperature);
}

Failure attempt_hardware_limits(HeaterLimits& limits)
{
    return attempt(LIB(GetHeatCtrlHwLimits), &limits.voltage, &limits.current, &limits.power,
                   &limits.temperature);
}

Failure attempt_output_voltage(unsigned address, OutputMeasurement& volts)
{
    return attempt(LIB(GetHVsupplyOutputVoltage), address, &volts.valid, &volts.value);
}

Failure attempt_output_current(unsigned address, OutputMeasurement& amperes)
{
    return attempt(LIB(GetHVsupplyOutputCurrent), address, &amperes.valid, &amperes.value);
}
