/// What the series of measurements of the acceptance test consist of, for who takes and tells them
/// and for who reads them. How long they are stands in protocol/report/schedule.h.
#pragma once

#include "instrument/addresses.h"
#include "instrument/controller_readings.h"
#include "instrument/module_readings.h"
#include "protocol/report/report_texts.h"
#include "protocol/report/schedule.h"
#include "protocol/report/statistics.h"

#include <cstddef>
#include <span>

/// A member of a record, and how it is told.
template <class Record>
struct SeriesChannel {
    const char* label;
    double Record::*value;
    const QuantityFormat* quantity;
};

namespace channels
{

inline constexpr SeriesChannel<CpuData> cpu[] = {
    {"load", &CpuData::load, &quantity::percent_of_one},
    {"frequency", &CpuData::frequency, &quantity::megahertz},
};

inline constexpr SeriesChannel<ControllerHousekeeping> controller_housekeeping[] = {
    {"3V3", &ControllerHousekeeping::plus_3_3, &quantity::volts},
    {"5V0", &ControllerHousekeeping::plus_5, &quantity::volts},
    {"24V", &ControllerHousekeeping::plus_24, &quantity::volts},
    {"CPU", &ControllerHousekeeping::cpu, &quantity::degrees},
    {"PSU", &ControllerHousekeeping::psu, &quantity::degrees},
};

using ModuleChannel = SeriesChannel<ModuleHousekeeping>;

inline constexpr ModuleChannel base_unit_housekeeping[] = {
    {"3V3", &ModuleHousekeeping::plus_3_3, &quantity::volts},
    {"CPU", &ModuleHousekeeping::cpu, &quantity::degrees},
};
inline constexpr ModuleChannel heat_controller_housekeeping[] = {
    {"3V3", &ModuleHousekeeping::plus_3_3, &quantity::volts},
    {"5V0", &ModuleHousekeeping::plus_5, &quantity::volts},
    {"24V", &ModuleHousekeeping::plus_24, &quantity::volts},
    {"CPU", &ModuleHousekeeping::cpu, &quantity::degrees},
    {"PSU", &ModuleHousekeeping::psu, &quantity::degrees},
};
inline constexpr ModuleChannel hv_supply_housekeeping[] = {
    {"3V3", &ModuleHousekeeping::plus_3_3, &quantity::volts},
    {"5V0", &ModuleHousekeeping::plus_5, &quantity::volts},
    {"+24V", &ModuleHousekeeping::plus_24, &quantity::volts},
    {"-22V", &ModuleHousekeeping::minus_22, &quantity::volts},
    {"+18V", &ModuleHousekeeping::plus_18, &quantity::volts},
    {"-18V", &ModuleHousekeeping::minus_18, &quantity::volts},
    {"1V5", &ModuleHousekeeping::vc, &quantity::volts},
    {"A-Gnd", &ModuleHousekeeping::analog_ground, &quantity::volts},
    {"CPU", &ModuleHousekeeping::cpu, &quantity::degrees},
};

[[nodiscard]] constexpr std::span<const ModuleChannel> module_housekeeping(unsigned address)
{
    if (address == base_unit)
        return base_unit_housekeeping;
    if (address == heat_controller)
        return heat_controller_housekeeping;
    return hv_supply_housekeeping;
}

} // namespace channels

/// Transfers whose times are measured.
inline constexpr std::size_t timed_transfers = 10;
inline constexpr unsigned needed_uptime_seconds = 100;
/// Of what the heater's hardware allows, where a run is limited.
inline constexpr double limited_part = 0.1;
/// The runs of the heater, in their order; the title of a run has its name in parentheses.
inline constexpr const char* heater_runs[] = {"voltage-limited", "current-limited", "power-limited",
                                              "unlimited"};
