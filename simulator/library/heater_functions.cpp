/// The heat-controller's functions.
#include "simulator/library/call.h"
#include "simulator/library/units.h"
#include "simulator/model/config_record.h"
#include "simulator/model/inputs.h"
#include "simulator/model/measurements.h"
#include "simulator/model/noise.h"
#include "simulator/model/status.h"

#include <cmath>

using namespace simulator;

namespace
{

/// Runs `work(instrument)` when the heat-controller answers.
template <Name name, typename Work, typename... Parameters>
std::int32_t call_heater(const Work& work, Parameters... parameters)
{
    return call<name>(
        [&](Instrument& instrument) {
            const Failure failure = find_heater(instrument);
            return failure == Failure::none ? call_steps::run(work, instrument) : failure;
        },
        parameters...);
}

Failure refuse(const char* what, double value)
{
    explain(std::string(what) + " " + std::to_string(value) + " refused by the heat-controller");
    return Failure::bad_value;
}

/// Sets a limit; one beyond what the field can hold is held at its end.
Failure set_limit(Instrument& instrument, std::size_t place, std::size_t bytes, double value,
                  double unit)
{
    if (std::isnan(value))
        return refuse("limit", value);
    const std::uint32_t highest = bytes == 2 ? 0xFFFF : 0xFFFF'FFFF;
    put_field(current_config(instrument), place, bytes, raw_value(value, unit, highest));
    settings_changed(instrument);
    return Failure::none;
}

} // namespace

std::int32_t COM_KOV_CTRL_GetHeatCtrlHousekeeping(std::uint8_t* valid, double* voltage33,
                                                  double* temperatureCPU, double* voltage5,
                                                  double* voltage24, double* temperaturePSU)
{
    return call_heater<"GetHeatCtrlHousekeeping">(
        [&](Instrument& instrument) {
            const ModuleReading reading = read_housekeeping(instrument, 0);
            *valid = reading.is_new;
            *voltage33 = reading.values.voltage33;
            *temperatureCPU = reading.values.cpu_temperature;
            *voltage5 = reading.values.voltage5;
            *voltage24 = reading.values.voltage24;
            *temperaturePSU = reading.values.psu_temperature;
        },
        valid, voltage33, temperatureCPU, voltage5, voltage24, temperaturePSU);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlHeaterTemperature(double* temperature)
{
    return call_heater<"GetHeatCtrlHeaterTemperature">(
        [&](Instrument& instrument) { *temperature = heater_target(current_config(instrument)); },
        temperature);
}

std::int32_t COM_KOV_CTRL_SetHeatCtrlHeaterTemperature(const double* temperature)
{
    return call_heater<"SetHeatCtrlHeaterTemperature">(
        [&](Instrument& instrument) {
            if (std::isnan(*temperature))
                return refuse("temperature", *temperature);
            put_field(current_config(instrument), field::temperature, 4,
                      raw_value(*temperature * 1000 + zero_celsius_mk, 1.0, 0xFFFF'FFFF));
            settings_changed(instrument);
            return Failure::none;
        },
        temperature);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlOutputVoltage(double* voltage)
{
    return call_heater<"GetHeatCtrlOutputVoltage">(
        [&](Instrument& instrument) {
            const Heater& heater = instrument.heater;
            const HeaterModel& model = instrument.physical.heater;
            *voltage =
                heater.controlling ? heater.heater_voltage + heater.current * model.wires : -1.0;
        },
        voltage);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlHeaterPower(double* power)
{
    return call_heater<"GetHeatCtrlHeaterPower">(
        [&](Instrument& instrument) {
            const Heater& heater = instrument.heater;
            *power = heater.controlling ? heater.heater_voltage * heater.current : -1.0;
        },
        power);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlVoltageLimit(double* voltage)
{
    return call_heater<"GetHeatCtrlVoltageLimit">(
        [&](Instrument& instrument) {
            *voltage = heater_voltage_limit(current_config(instrument));
        },
        voltage);
}

std::int32_t COM_KOV_CTRL_SetHeatCtrlVoltageLimit(const double* voltage)
{
    return call_heater<"SetHeatCtrlVoltageLimit">(
        [&](Instrument& instrument) {
            return set_limit(instrument, field::voltage_limit, 2, *voltage, volt_unit);
        },
        voltage);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlCurrentLimit(double* current)
{
    return call_heater<"GetHeatCtrlCurrentLimit">(
        [&](Instrument& instrument) {
            *current = heater_current_limit(current_config(instrument));
        },
        current);
}

std::int32_t COM_KOV_CTRL_SetHeatCtrlCurrentLimit(const double* current)
{
    return call_heater<"SetHeatCtrlCurrentLimit">(
        [&](Instrument& instrument) {
            return set_limit(instrument, field::current_limit, 2, *current, ampere_unit);
        },
        current);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlPowerLimit(double* power)
{
    return call_heater<"GetHeatCtrlPowerLimit">(
        [&](Instrument& instrument) { *power = heater_power_limit(current_config(instrument)); },
        power);
}

std::int32_t COM_KOV_CTRL_SetHeatCtrlPowerLimit(const double* power)
{
    return call_heater<"SetHeatCtrlPowerLimit">(
        [&](Instrument& instrument) {
            return set_limit(instrument, field::power_limit, 4, *power, watt_unit);
        },
        power);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlHwLimits(double* voltage, double* current, double* power,
                                              double* temperature)
{
    return call_heater<"GetHeatCtrlHwLimits">(
        [&](Instrument& instrument) {
            const HeaterModel& model = instrument.physical.heater;
            *voltage = model.voltage_limit;
            *current = model.current_limit;
            *power = model.power_limit;
            *temperature = model.temperature_limit;
        },
        voltage, current, power, temperature);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlMonitoring(std::uint8_t* ready, double* outputVoltage,
                                                double* heaterVoltage, double* current,
                                                double* temperature)
{
    return call_heater<"GetHeatCtrlMonitoring">(
        [&](Instrument& instrument) {
            *ready = take_measurement(instrument, 0, Measurement::monitoring);
            const std::int64_t number = measurement_number(instrument, 0, Measurement::monitoring);
            const Monitoring& sample = instrument.heater.sample;
            *outputVoltage = with_noise(instrument, sample.output_voltage, 0.005,
                                        Noise::heater_output_voltage, number);
            *heaterVoltage =
                with_noise(instrument, sample.heater_voltage, 0.005, Noise::heater_voltage, number);
            *current = with_noise(instrument, sample.current, 0.001, Noise::heater_current, number);
            *temperature =
                with_noise(instrument, sample.temperature, 0.02, Noise::heater_temperature, number);
        },
        ready, outputVoltage, heaterVoltage, current, temperature);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlIlockState(std::uint8_t* state)
{
    return call_heater<"GetHeatCtrlIlockState">(
        [&](Instrument& instrument) { *state = read_heater_interlocks(instrument); }, state);
}
