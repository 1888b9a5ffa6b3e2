#include "simulator/model/instrument.h"

namespace simulator
{

void refresh_presence(Instrument& looked)
{
    for (unsigned unit = 0; unit < unit_count; ++unit)
        looked.presence[unit] = looked.physical.units[unit].present;
}

void scan(Instrument& looked, unsigned unit)
{
    const Unit& found = looked.physical.units[unit];
    looked.scanned[unit] =
        found.present == 1 ? Scanned{found.identity.product_number, found.identity.hardware_type}
                           : Scanned{};
}

std::span<std::uint8_t, config_size> current_config(Instrument& asked)
{
    return record(asked.memory, 0).config;
}

std::span<const std::uint8_t, config_size> current_config(const Instrument& asked)
{
    return std::span<const std::uint8_t, config_size>{asked.memory.bytes.get() + 1, config_size};
}

bool works(const Instrument& asked, unsigned unit)
{
    const Unit& asked_unit = asked.physical.units[unit];
    const std::uint16_t kind = unit == base_unit ? base_type
                               : unit == 0       ? heater_type
                                                 : supply_type;
    return asked_unit.present == 1 && asked_unit.identity.device_type == kind;
}

double main_supply(const Instrument& asked)
{
    const Physical& physical = asked.physical;
    return physical.ac_input && physical.dc_output ? physical.readings.voltage24 : 0.0;
}

} // namespace simulator
