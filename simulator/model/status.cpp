#include "simulator/model/status.h"

#include "simulator/model/clocks.h"
#include "simulator/model/config_record.h"
#include "simulator/model/inputs.h"

#include <cmath>

namespace simulator
{

namespace
{

constexpr double supply_tolerance = 0.05; ///< of a supply voltage's nominal value
constexpr double hot = 50.0;              ///< degrees Celsius
constexpr double cold = 5.0;

/// Bits of the device state.
namespace fault
{
constexpr unsigned interlock = 0x01;
constexpr unsigned supply = 0x02;
constexpr unsigned temperature = 0x04;
constexpr unsigned fan = 0x08;
constexpr unsigned modules = 0x10;
} // namespace fault

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
    if ((status.device & fault::supply) != 0)
        return 0x12;
    if ((status.temperature & 0x0C) != 0)
        return 0x13;
    if ((status.device & fault::interlock) != 0)
        return 0x15;
    if ((status.device & fault::modules) != 0)
        return 0x11;
    if ((status.device & fault::fan) != 0)
        return 0x10;
    return enabled ? 0 : 1;
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

Led module_led(const Status& status, const ModuleState& module)
{
    if ((status.device & fault::modules) != 0)
        return Led::red;
    if (module.activated && module.interlocked)
        return Led::yellow;
    if (module.controlling)
        return Led::green;
    return module.activated && status.device_active ? Led::cyan : Led::blue;
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
    set_operating(instrument, unit, active);
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
    const Led led = status.state == 0 ? Led::green : status.state == 1 ? Led::blue : Led::red;
    status.leds[base_unit] = active ? led : status.state < 2 ? Led::blue : led;
    status.leds[controller] = led;
    set_operating(instrument, base_unit, active);
    set_operating(instrument, controller, status.device_active);
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
    status.interlock_results = static_cast<std::uint8_t>(steadily_closed(instrument));
    const std::uint8_t override = config[field::fan_override];
    status.fan_enabled = (override & 1) != 0 ? (override & 2) != 0 : physical.fan.switched_on;

    unsigned device = 0;
    device |=
        interlocked(status.interlock_results, supply_mask | heater_mask) ? fault::interlock : 0U;
    device |= (status.voltage & 0x37) != 0x37 ? fault::supply : 0U;
    device |= (status.temperature & 0x0F) != 0 ? fault::temperature : 0U;
    device |= physical.fan.failed ? fault::fan : 0U;
    device |= modules_wrong(instrument) ? fault::modules : 0U;
    status.device = physical.forced_device_state.value_or(static_cast<std::uint8_t>(device));

    const bool enabled = config[field::enable] != 0;
    status.state = physical.forced_state.value_or(overall(status, enabled));
    // A fan or an interlock stops nothing as a whole: interlocks act on the modules they guard.
    status.device_active =
        enabled && (status.device & (fault::supply | fault::temperature | fault::modules)) == 0;
    refresh_modules(instrument, heater_mask, supply_mask);
    refresh_base(instrument);
}

void settings_changed(Instrument& instrument)
{
    instrument.changed = true;
    refresh(instrument);
}

void show_led(Led led, std::uint8_t* red, std::uint8_t* green, std::uint8_t* blue)
{
    const unsigned bits = static_cast<unsigned>(led);
    *red = bits >> 2 & 1;
    *green = bits >> 1 & 1;
    *blue = bits & 1;
}

} // namespace simulator
