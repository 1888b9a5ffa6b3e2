/// Identification, housekeeping and status words of the controller.
#include "simulator/library/call.h"
#include "simulator/library/units.h"
#include "simulator/model/clocks.h"
#include "simulator/model/fan.h"
#include "simulator/model/inputs.h"
#include "simulator/model/measurements.h"
#include "simulator/model/noise.h"
#include "simulator/model/status.h"

using namespace simulator;

std::int32_t COM_KOV_CTRL_GetProductID(char* identification)
{
    return call<"GetProductID">(
        [&](Instrument& instrument) {
            copy_product_id(identification, instrument.physical.identity.product_id);
        },
        identification);
}

std::int32_t COM_KOV_CTRL_GetProductNo(std::int32_t* number)
{
    return call<"GetProductNo">(
        [&](Instrument& instrument) { *number = instrument.physical.identity.product_number; },
        number);
}

std::int32_t COM_KOV_CTRL_GetManufDate(std::uint16_t* year, std::uint16_t* week)
{
    return call<"GetManufDate">(
        [&](Instrument& instrument) {
            *year = instrument.physical.identity.year;
            *week = instrument.physical.identity.week;
        },
        year, week);
}

std::int32_t COM_KOV_CTRL_GetHwVersion(std::uint16_t* version)
{
    return call<"GetHwVersion">(
        [&](Instrument& instrument) { *version = instrument.physical.identity.hardware_version; },
        version);
}

std::int32_t COM_KOV_CTRL_GetFwVersion(std::uint16_t* version)
{
    return call<"GetFwVersion">(
        [&](Instrument& instrument) { *version = instrument.physical.identity.firmware_version; },
        version);
}

std::int32_t COM_KOV_CTRL_GetFwDate(char* date)
{
    return call<"GetFwDate">(
        [&](Instrument& instrument) {
            copy_text(date, 12, instrument.physical.identity.firmware_date);
        },
        date);
}

std::int32_t COM_KOV_CTRL_GetDevType(std::uint16_t* type)
{
    return call<"GetDevType">(
        [&](Instrument& instrument) { *type = instrument.physical.identity.device_type; }, type);
}

std::int32_t COM_KOV_CTRL_GetHwType(std::uint32_t* type)
{
    return call<"GetHwType">(
        [&](Instrument& instrument) { *type = instrument.physical.identity.hardware_type; }, type);
}

std::int32_t COM_KOV_CTRL_GetUptimeInt(std::uint32_t* seconds, std::uint16_t* milliseconds,
                                       std::uint32_t* totalSeconds,
                                       std::uint16_t* totalMilliseconds)
{
    return call<"GetUptimeInt">(
        [&](Instrument& instrument) {
            split_duration(uptime_us(instrument, controller), seconds, milliseconds);
            split_duration(total_uptime_us(instrument, controller), totalSeconds,
                           totalMilliseconds);
        },
        seconds, milliseconds, totalSeconds, totalMilliseconds);
}

std::int32_t COM_KOV_CTRL_GetOptimeInt(std::uint32_t* seconds, std::uint16_t* milliseconds,
                                       std::uint32_t* totalSeconds,
                                       std::uint16_t* totalMilliseconds)
{
    return call<"GetOptimeInt">(
        [&](Instrument& instrument) {
            split_duration(optime_us(instrument, controller), seconds, milliseconds);
            split_duration(total_optime_us(instrument, controller), totalSeconds,
                           totalMilliseconds);
        },
        seconds, milliseconds, totalSeconds, totalMilliseconds);
}

std::int32_t COM_KOV_CTRL_GetHousekeeping(double* voltage24, double* voltage5, double* voltage33,
                                          double* temperatureCPU, double* temperaturePSU)
{
    return call<"GetHousekeeping">(
        [&](Instrument& instrument) {
            take_measurement(instrument, controller, Measurement::controller_housekeeping);
            const Readings& mean = instrument.physical.readings;
            const std::int64_t sample =
                measurement_number(instrument, controller, Measurement::controller_housekeeping);
            *voltage24 = with_noise(instrument, main_supply(instrument), 0.05,
                                    Noise::controller_voltage24, sample);
            *voltage5 =
                with_noise(instrument, mean.voltage5, 0.01, Noise::controller_voltage5, sample);
            *voltage33 =
                with_noise(instrument, mean.voltage33, 0.005, Noise::controller_voltage33, sample);
            *temperatureCPU = with_noise(instrument, mean.cpu_temperature, 0.2,
                                         Noise::controller_cpu_temperature, sample);
            *temperaturePSU = with_noise(instrument, mean.psu_temperature, 0.2,
                                         Noise::controller_psu_temperature, sample);
        },
        voltage24, voltage5, voltage33, temperatureCPU, temperaturePSU);
}

std::int32_t COM_KOV_CTRL_GetCPUdata(double* load, double* frequency)
{
    return call<"GetCPUdata">(
        [&](Instrument& instrument) {
            const std::int64_t sample =
                measurement_number(instrument, controller, Measurement::controller_housekeeping);
            *load = with_noise(instrument, instrument.physical.cpu_load, 0.02,
                               Noise::controller_cpu_load, sample);
            *frequency = instrument.physical.cpu_frequency;
        },
        load, frequency);
}

std::int32_t COM_KOV_CTRL_GetFanData(std::uint8_t* failed, std::uint16_t* reserved,
                                     std::uint16_t* setSpeed, std::uint16_t* measuredSpeed,
                                     float* pwm)
{
    return call<"GetFanData">(
        [&](Instrument& instrument) {
            take_measurement(instrument, controller, Measurement::controller_fan);
            const FanReading fan = fan_reading(instrument);
            *failed = instrument.physical.fan.failed;
            *reserved = 0;
            *setSpeed = fan.set_speed;
            *measuredSpeed = fan.measured_speed;
            *pwm = fan.pwm;
        },
        failed, reserved, setSpeed, measuredSpeed, pwm);
}

std::int32_t COM_KOV_CTRL_GetLEDData(std::uint8_t* red, std::uint8_t* green, std::uint8_t* blue)
{
    return call<"GetLEDData">(
        [&](Instrument& instrument) {
            show_led(instrument.status.leds[controller], red, green, blue);
        },
        red, green, blue);
}

std::int32_t COM_KOV_CTRL_GetState(std::uint16_t* state)
{
    return call<"GetState">([&](Instrument& instrument) { *state = instrument.status.state; },
                            state);
}

std::int32_t COM_KOV_CTRL_GetDeviceState(std::uint8_t* state)
{
    return call<"GetDeviceState">(
        [&](Instrument& instrument) { *state = instrument.status.device; }, state);
}

std::int32_t COM_KOV_CTRL_GetVoltageState(std::uint8_t* state)
{
    return call<"GetVoltageState">(
        [&](Instrument& instrument) { *state = instrument.status.voltage; }, state);
}

std::int32_t COM_KOV_CTRL_GetTemperatureState(std::uint8_t* state)
{
    return call<"GetTemperatureState">(
        [&](Instrument& instrument) { *state = instrument.status.temperature; }, state);
}

std::int32_t COM_KOV_CTRL_GetFanState(std::uint8_t* state)
{
    return call<"GetFanState">([&](Instrument& instrument) { *state = read_fan_word(instrument); },
                               state);
}

std::int32_t COM_KOV_CTRL_GetInterlockState(std::uint16_t* state)
{
    return call<"GetInterlockState">(
        [&](Instrument& instrument) { *state = read_interlock_word(instrument); }, state);
}

std::int32_t COM_KOV_CTRL_GetInputs(std::uint8_t* interlockFront, std::uint8_t* interlockRear,
                                    std::uint8_t* fanEnabled)
{
    return call<"GetInputs">(
        [&](Instrument& instrument) {
            *interlockFront = input_level(instrument, Input::front);
            *interlockRear = input_level(instrument, Input::rear);
            *fanEnabled = instrument.status.fan_enabled;
        },
        interlockFront, interlockRear, fanEnabled);
}

std::int32_t COM_KOV_CTRL_GetPowerMonitors(std::uint8_t* acInput, std::uint8_t* dcOutput)
{
    return call<"GetPowerMonitors">(
        [&](Instrument& instrument) {
            const Physical& physical = instrument.physical;
            *acInput = physical.ac_input;
            *dcOutput = physical.ac_input && physical.dc_output;
        },
        acInput, dcOutput);
}

std::int32_t COM_KOV_CTRL_GetCompleteState(std::uint8_t* dataReady, std::uint8_t* deviceState,
                                           std::uint8_t* voltageState,
                                           std::uint8_t* temperatureState, std::uint8_t* fanState,
                                           std::uint16_t* interlockState, std::uint16_t* state,
                                           std::uint8_t* moduleDataReady,
                                           std::uint16_t* moduleState)
{
    return call<"GetCompleteState">(
        [&](Instrument& instrument) {
            const Status& status = instrument.status;
            *dataReady = data_ready_flags(instrument, controller);
            *deviceState = status.device;
            *voltageState = status.voltage;
            *temperatureState = status.temperature;
            *fanState = read_fan_word(instrument);
            *interlockState = read_interlock_word(instrument);
            *state = status.state;
            for (unsigned unit = 0; unit < unit_count; ++unit) {
                moduleDataReady[unit] = data_ready_flags(instrument, unit);
                moduleState[unit] = status.modules[unit];
            }
        },
        dataReady, deviceState, voltageState, temperatureState, fanState, interlockState, state,
        moduleDataReady, moduleState);
}

std::int32_t COM_KOV_CTRL_GetDataReadyFlags(std::uint8_t* flags)
{
    return call<"GetDataReadyFlags">(
        [&](Instrument& instrument) { *flags = data_ready_flags(instrument, controller); }, flags);
}
