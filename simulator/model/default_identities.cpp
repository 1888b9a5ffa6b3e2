#include "simulator/model/default_identities.h"

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

/// An HV-supply: they differ in no more than this.
Identity supply(const char* product_id, std::int32_t number, std::uint16_t week,
                std::uint32_t hardware)
{
    return {.product_id = product_id,
            .product_number = number,
            .year = 2024,
            .week = week,
            .hardware_version = 0x0101,
            .firmware_version = 0x0203,
            .firmware_date = "Jan 10 2024",
            .device_type = supply_type,
            .hardware_type = hardware,
            .fpga_version = 0x0002'0500};
}

} // namespace

void default_identities(Physical& physical)
{
    // 256 KiB of memory, RS232 and USB port, internal and external LED.
    // The full screen of the program has room for the identification, with ", simulated" behind it.
    physical.identity = {.product_id = "KOV-CTRL, Rev. 1-00",
                         .product_number = 240101,
                         .year = 2024,
                         .week = 7,
                         .hardware_version = 0x0100,
                         .firmware_version = 0x010A,
                         .firmware_date = "Mar 15 2024",
                         .device_type = controller_type,
                         .hardware_type = 0x0000'F100};
    physical.readings.cpu_load = 12.0;
    // 24 V, 5 A, two interlocks, one channel.
    physical.units[0].identity = {.product_id = "KOV-HTCTRL, Heat-Controller, Rev. 1-02",
                                  .product_number = 240211,
                                  .year = 2024,
                                  .week = 11,
                                  .hardware_version = 0x0102,
                                  .firmware_version = 0x0104,
                                  .firmware_date = "Feb 20 2024",
                                  .device_type = heater_type,
                                  .hardware_type = 0x0605'0180};
    physical.units[1].identity = supply("KOV-HVPS, HV-Supply 3000V bipolar, Rev. 1-01", 240321, 12,
                                        supply_hardware(3000, 1, 0));
    physical.units[2].identity = supply("KOV-HVPS, HV-Supply 2000V positive, Rev. 1-01", 240322, 12,
                                        supply_hardware(2000, 0, 1));
    physical.units[3].identity = supply("KOV-HVPS, HV-Supply 500V negative, Rev. 1-01", 240323, 13,
                                        supply_hardware(500, 0, 0));
    // 24 V, 200 W, four slots, one fan.
    physical.units[base_unit].identity = {.product_id = "KOV-BASE, Base unit 200W, Rev. 1-00",
                                          .product_number = 240401,
                                          .year = 2024,
                                          .week = 6,
                                          .hardware_version = 0x0100,
                                          .firmware_version = 0x0102,
                                          .firmware_date = "Dec 04 2023",
                                          .device_type = base_type,
                                          .hardware_type = 0x0140'C818};
}

} // namespace simulator
