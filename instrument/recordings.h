/// What the displays record into files, as who writes and who reads them must know it.
#pragma once

#include "frame/files/measurement_log.h"

namespace recording
{

inline constexpr const char* degrees_celsius = "\xB0"
                                               "C";

inline constexpr RecordedColumn heat_controller_columns[] = {
    {"3V3", "V"},
    {"5V0", "V"},
    {"24V", "V"},
    {"T_CPU", degrees_celsius},
    {"T_PSU", degrees_celsius},
    {"Vout", "V"},
    {"Vheat", "V"},
    {"Iout", "A"},
    {"Theat", degrees_celsius},
};
inline constexpr RecordedCount heat_controller_counts[] = {
    {"Status communication error", true},       {"Monitoring communication error", true},
    {"Housekeeping communication error", true}, {"Monitoring data overflow", true},
    {"Housekeeping data overflow", true},       {"Monitoring data received", false},
    {"Housekeeping data received", false},
};
inline constexpr MeasurementFormat heat_controller = {
    "Housekeeping and monitoring data of", heat_controller_columns, heat_controller_counts};

inline constexpr RecordedColumn hv_supply_columns[] = {
    {"Width", "ns"}, {"Period", "ns"}, {"Voltage", "V"}, {"Current", "nA"}, {"Phase", "ns"},
};
inline constexpr MeasurementFormat hv_supply = {"Operating parameters of", hv_supply_columns, {}};

inline constexpr const MeasurementFormat* formats[] = {&heat_controller, &hv_supply};

} // namespace recording
