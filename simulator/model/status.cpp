/// Status words, LEDs and control: what follows from settings, inputs and readings.
#include "simulator/model/config_record.h"
#include "simulator/model/instrument.h"

#include <cmath>

namespace simulator
{

namespace
{

constexpr double supply_tolerance = 0.05; ///< of a supply voltage's nominal value
constexpr double hot = 50.0;              ///< degrees Celsius
constexpr double cold = 5.0;

/// Bits of the device state.
enum : unsigned {
    fault_interlock = 0x01,
    fault_supply = 0x02,
    fault_temperature = 0x04,
    fault_fan = 0x08,
    fault_modules = 0x10
};

/// LED colours.
enum : std::uint8_t { dark = 0, blue = 1, green = 2, cyan = 3, red = 4, yellow = 6 };

bool good(double voltage, double nominal)
{
    return std::abs(voltage - nominal) <= supply_tolerance * nominal;
}

std::uint8_t voltage_word(const Instrument& instrument)
{
    const Physical& physical = instrument.physical;
    unsigned word = 0;
    word |= good(physical.readings.voltage33, 3.3) ? 0x01U : 0U;
    word |= good(physical.readings.voltage5, 5.0) ? 0x02U : 0U;
    word |= good(main_supply(instrument), 24.0) ? 0x04U : 0U;
    word |= physical.ac_input ? 0x10U : 0U;
    word |= physical.ac_input && physical.dc_output ? 0x20U : 0U;
    return physical.forced_voltage_state.value_or(static_cast<std::uint8_t>(word));
}

std::uint8_t temperature_word(const Instrument& instrument)
{
    const Readings& readings = instrument.physical.readings;
    unsigned word = 0;
    word |= readings.cpu_temperature > hot ? 0x01U : 0U;
    word |= readings.psu_temperature > hot ? 0x02U : 0U;
    word |= readings.cpu_temperature < cold ? 0x04U : 0U;
    word |= readings.psu_temperature < cold ? 0x08U : 0U;
    return instrument.physical.forced_temperature_state.value_or(static_cast<std::uint8_t>(word));
}

std::uint8_t closed_inputs(const Instrument& instrument)
{
    unsigned closed = 0;
    for (unsigned input = 0; input < input_count; ++input)
        if (instrument.physical.inputs[input] == Contact::closed &&
            (input >= front || works(instrument, 0)))
            closed |= 1U << input;
    return static_cast<std::uint8_t>(closed);
}

/// True when a module is not what was saved, or does not belong into its slot.
bool modules_wrong(const Instrument& instrument)
{
    for (unsigned unit = 0; unit < unit_count; ++unit) {
        if (instrument.scanned[unit] != instrument.saved[unit])
            return true;
        if (instrument.physical.units[unit].present == 1 && !works(instrument, unit))
            return true;
    }
    return false;
}

/// Overall state: On, Stand-by, or the most severe error.
std::uint16_t overall(const Status& status, bool enabled)
{
    if ((status.temperature & 0x03) != 0)
        return 0x14;
    if ((status.device & fault_supply) != 0)
        return 0x12;
    if ((status.temperature & 0x0C) != 0)
        return 0x13;
    if ((status.device & fault_interlock) != 0)
        return 0x15;
    if ((status.device & fault_modules) != 0)
        return 0x11;
    if ((status.device & fault_fan) != 0)
        return 0x10;
    return enabled ? 0 : 1;
}

void set_operating(Clock& clock, bool operating, std::int64_t now_us)
{
    if (clock.operating == operating)
        return;
    if (clock.operating)
        clock.operated_us += now_us - clock.operating_since_us;
    clock.operating = operating;
    clock.operating_since_us = now_us;
}

bool interlocked(std::uint8_t results, unsigned mask)
{
    return (mask & 0x0FU & ~unsigned{results}) != 0;
}

struct ModuleState {
    bool activated;
    bool controlling;
    bool interlocked;
};

std::uint8_t module_led(const Status& status, const ModuleState& module)
{
    if ((status.device & fault_modules) != 0)
        return red;
    if (module.activated && module.interlocked)
        return yellow;
    if (module.controlling)
        return green;
    return module.activated && status.device_active ? cyan : blue;
}

void set_module(Instrument& instrument, unsigned unit, const ModuleState& module)
{
    Status& status = instrument.status;
    const bool active = status.device_active && module.activated;
    unsigned word = 0;
    if (status.device_active)
        word |= 0x8000;
    if (active)
        word |= 0x4000;
    if (module.controlling)
        word |= 0x0100;
    status.modules[unit] =
        instrument.physical.units[unit].forced_state.value_or(static_cast<std::uint16_t>(word));
    status.leds[unit] = module_led(status, module);
    set_operating(instrument.clocks[unit], active, instrument.now_us);
}

void refresh_modules(Instrument& instrument, unsigned heater_mask, unsigned supply_mask)
{
    const ConfigBytes config = current_config(instrument);
    const Status& status = instrument.status;
    const auto state = [&](unsigned unit, std::uint8_t activated, double target, unsigned mask) {
        const bool open = interlocked(status.interlock_results, mask);
        return ModuleState{activated != 0,
                           status.device_active && works(instrument, unit) && activated != 0 &&
                               target >= 0 && !open,
                           open};
    };
    const ModuleState heater =
        state(0, config[field::heater_active], heater_target(config), heater_mask);
    instrument.heater.controlling = heater.controlling;
    set_module(instrument, 0, heater);
    for (unsigned supply = 0; supply < supply_count; ++supply) {
        const ModuleState module = state(supply + 1, config[field::supply_active(supply)],
                                         supply_target(config, supply), supply_mask);
        instrument.supplies[supply].controlling = module.controlling;
        set_module(instrument, supply + 1, module);
    }
}

void refresh_base(Instrument& instrument)
{
    Status& status = instrument.status;
    const bool active = status.device_active && instrument.base_activated;
    status.modules[base_unit] = instrument.physical.units[base_unit].forced_state.value_or(
        active ? std::uint16_t{0x8000} : std::uint16_t{0});
    const std::uint8_t led = status.state == 0 ? green : status.state == 1 ? blue : red;
    status.leds[base_unit] = active ? led : status.state < 2 ? std::uint8_t{blue} : led;
    status.leds[controller] = led;
    set_operating(instrument.clocks[base_unit], active, instrument.now_us);
    set_operating(instrument.clocks[controller], status.device_active, instrument.now_us);
}

} // namespace

void refresh(Instrument& instrument)
{
    const Physical& physical = instrument.physical;
    const ConfigBytes config = current_config(instrument);
    const unsigned supply_mask = config[field::interlock_masks] & 0x0FU;
    const unsigned heater_mask = works(instrument, 0) ? config[field::interlock_masks] >> 4 : 0U;
    Status& status = instrument.status;
    status.voltage = voltage_word(instrument);
    status.temperature = temperature_word(instrument);
    status.interlock_results = closed_inputs(instrument);
    const std::uint8_t override = config[field::fan_override];
    status.fan_enabled = (override & 1) != 0 ? (override & 2) != 0 : physical.fan.switched_on;

    unsigned device = 0;
    device |=
        interlocked(status.interlock_results, supply_mask | heater_mask) ? fault_interlock : 0U;
    device |= (status.voltage & 0x37) != 0x37 ? fault_supply : 0U;
    device |= (status.temperature & 0x0F) != 0 ? fault_temperature : 0U;
    device |= physical.fan.failed ? fault_fan : 0U;
    device |= modules_wrong(instrument) ? fault_modules : 0U;
    status.device = physical.forced_device_state.value_or(static_cast<std::uint8_t>(device));

    const bool enabled = config[field::enable] != 0;
    status.state = physical.forced_state.value_or(overall(status, enabled));
    // A fan or an interlock stops nothing as a whole: interlocks act on the modules they guard.
    status.device_active =
        enabled && (status.device & (fault_supply | fault_temperature | fault_modules)) == 0;
    refresh_modules(instrument, heater_mask, supply_mask);
    refresh_base(instrument);
}

} // namespace simulator
