/// The HV-supplies' functions.
#include "simulator/library/call.h"
#include "simulator/library/units.h"
#include "simulator/model/arithmetic.h"
#include "simulator/model/config_record.h"
#include "simulator/model/measurements.h"
#include "simulator/model/status.h"
#include "simulator/model/supply.h"

#include <algorithm>
#include <cmath>

using namespace simulator;

namespace
{

/// Runs `work(instrument, supply)` when an HV-supply answers at that address.
template <Name name, typename Work, typename... Parameters>
std::int32_t call_supply(std::uint32_t address, const Work& work, Parameters... parameters)
{
    return call<name>(
        [&](Instrument& instrument) {
            unsigned supply = 0;
            const Failure failure = find_supply(instrument, address, supply);
            if (failure == Failure::none)
                work(instrument, supply);
            return failure;
        },
        address, parameters...);
}

/// A target voltage in the record's unit; every negative one is the mark for "off".
std::int32_t raw_target(double voltage)
{
    constexpr double highest = 2'000'000; // V, well inside the field
    if (!(voltage >= 0))
        return -1000;
    return static_cast<std::int32_t>(nearest(std::min(voltage, highest) / millivolt));
}

} // namespace

std::int32_t COM_KOV_CTRL_GetHVsupplyFpgaVersion(std::uint32_t address, std::uint32_t* version)
{
    return call_supply<"GetHVsupplyFpgaVersion">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            *version = instrument.physical.units[supply + 1].identity.fpga_version;
        },
        version);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyHousekeeping(std::uint32_t address, std::uint8_t* valid,
                                                  double* voltage33, double* temperatureCPU,
                                                  double* voltage5, double* voltage24,
                                                  double* voltageMinus22, double* voltage18,
                                                  double* voltageMinus18, double* voltageVc,
                                                  double* analogGround)
{
    return call_supply<"GetHVsupplyHousekeeping">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            const ModuleReading reading = read_housekeeping(instrument, supply + 1);
            *valid = reading.is_new;
            *voltage33 = reading.values.voltage33;
            *temperatureCPU = reading.values.cpu_temperature;
            *voltage5 = reading.values.voltage5;
            *voltage24 = reading.values.voltage24;
            *voltageMinus22 = reading.values.voltage_minus22;
            *voltage18 = reading.values.voltage18;
            *voltageMinus18 = reading.values.voltage_minus18;
            *voltageVc = reading.values.voltage_vc;
            *analogGround = reading.values.analog_ground;
        },
        valid, voltage33, temperatureCPU, voltage5, voltage24, voltageMinus22, voltage18,
        voltageMinus18, voltageVc, analogGround);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyMeasRanges(std::uint32_t address, std::uint8_t* negative,
                                                std::uint8_t* high)
{
    return call_supply<"GetHVsupplyMeasRanges">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            const ConfigBytes config = current_config(instrument);
            *negative = config[field::negative(supply)] != 0;
            *high = config[field::high_range(supply)] != 0;
        },
        negative, high);
}

std::int32_t COM_KOV_CTRL_SetHVsupplyMeasRanges(std::uint32_t address, std::uint8_t negative,
                                                std::uint8_t high)
{
    return call_supply<"SetHVsupplyMeasRanges">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            set_ranges(instrument, supply, negative != 0, high != 0);
        },
        negative, high);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyOutputVoltage(std::uint32_t address, std::uint8_t* valid,
                                                   double* voltage)
{
    return call_supply<"GetHVsupplyOutputVoltage">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            *valid = take_measurement(instrument, supply + 1, Measurement::voltage);
            *voltage = instrument.supplies[supply].voltage_sample;
        },
        valid, voltage);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyOutputCurrent(std::uint32_t address, std::uint8_t* valid,
                                                   double* current)
{
    return call_supply<"GetHVsupplyOutputCurrent">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            *valid = take_measurement(instrument, supply + 1, Measurement::current);
            *current = instrument.supplies[supply].current_sample;
        },
        valid, current);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyTargetOutputVoltage(std::uint32_t address, double* voltage)
{
    return call_supply<"GetHVsupplyTargetOutputVoltage">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            *voltage = supply_target(current_config(instrument), supply);
        },
        voltage);
}

std::int32_t COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage(std::uint32_t address, double voltage)
{
    return call<"SetHVsupplyTargetOutputVoltage">(
        [&](Instrument& instrument) {
            unsigned supply = 0;
            const Failure failure = find_supply(instrument, address, supply);
            if (failure != Failure::none)
                return failure;
            if (std::isnan(voltage)) {
                explain("voltage refused by the HV-supply " + std::to_string(address));
                return Failure::bad_value;
            }
            put_field(current_config(instrument), field::target(supply), 4,
                      static_cast<std::uint32_t>(raw_target(voltage)));
            settings_changed(instrument);
            return Failure::none;
        },
        address, voltage);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyParamsPWM(std::uint32_t address, double* period, double* width,
                                               double* phaseMeasured, double* phaseSet,
                                               double* voltageSet, double* voltageMeasured,
                                               std::uint8_t* active, std::uint8_t* dataReady)
{
    return call_supply<"GetHVsupplyParamsPWM">(
        address,
        [&](Instrument& instrument, unsigned supply) {
            const PulseWidth pulse = pulse_width(instrument, supply);
            *period = pulse.period;
            *width = pulse.width;
            *phaseMeasured = pulse.phase_measured;
            *phaseSet = pulse.phase_set;
            *voltageSet = pulse.voltage_set;
            *voltageMeasured = pulse.voltage_measured;
            *active = instrument.supplies[supply].controlling;
            *dataReady = data_ready_flags(instrument, supply + 1);
        },
        period, width, phaseMeasured, phaseSet, voltageSet, voltageMeasured, active, dataReady);
}
