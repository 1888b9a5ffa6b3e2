#include "simulator/identity.h"

namespace simulator
{

namespace
{

/// Hardware-type word of an HV-supply with two current ranges, 1E-6 A and 1E-3 A.
constexpr std::uint32_t supply_hardware(std::uint32_t range, std::uint32_t bipolar,
                                        std::uint32_t positive)
{
    return range | 2U << 14 | 7U << 18 | 4U << 22 | bipolar << 26 | positive << 30;
}

} // namespace

void default_identities(Physical& physical)
{
    // 256 KiB of memory, RS232 and USB port, internal and external LED.
    physical.identity = {"KOV-CTRL, Controller, Rev. 1-00",
                         240101,
                         2024,
                         7,
                         0x0100,
                         0x010A,
                         "Mar 15 2024",
                         controller_type,
                         0x0000'F100,
                         0};
    physical.readings.cpu_load = 12.0;
    // 24 V, 5 A, two interlocks, one channel.
    physical.units[0].identity = {"KOV-HTCTRL, Heat-Controller, Rev. 1-02",
                                  240211,
                                  2024,
                                  11,
                                  0x0102,
                                  0x0104,
                                  "Feb 20 2024",
                                  heater_type,
                                  0x0605'0180,
                                  0};
    physical.units[1].identity = {"KOV-HVPS, HV-Supply 3000V bipolar, Rev. 1-01",
                                  240321,
                                  2024,
                                  12,
                                  0x0101,
                                  0x0203,
                                  "Jan 10 2024",
                                  supply_type,
                                  supply_hardware(3000, 1, 0),
                                  0x0002'0500};
    physical.units[2].identity = {"KOV-HVPS, HV-Supply 2000V positive, Rev. 1-01",
                                  240322,
                                  2024,
                                  12,
                                  0x0101,
                                  0x0203,
                                  "Jan 10 2024",
                                  supply_type,
                                  supply_hardware(2000, 0, 1),
                                  0x0002'0500};
    physical.units[3].identity = {"KOV-HVPS, HV-Supply 500V negative, Rev. 1-01",
                                  240323,
                                  2024,
                                  13,
                                  0x0101,
                                  0x0203,
                                  "Jan 10 2024",
                                  supply_type,
                                  supply_hardware(500, 0, 0),
                                  0x0002'0500};
    // 24 V, 200 W, four slots, one fan.
    physical.units[base_unit].identity = {"KOV-BASE, Base unit 200W, Rev. 1-00",
                                          240401,
                                          2024,
                                          6,
                                          0x0100,
                                          0x0102,
                                          "Dec 04 2023",
                                          base_type,
                                          0x0140'C818,
                                          0};
}

} // namespace simulator
