/// The texts of the acceptance test's report file, for who writes it and for who reads it.
#pragma once

#include <string_view>

namespace report_text
{

// ---- Begin and end ----

inline constexpr const char* created_on = "Test protocol created on ";
inline constexpr const char* completed = "Test protocol successfully completed within ";
inline constexpr const char* aborted = "*** Test protocol aborted due to an error ***";
inline constexpr const char* first_error = "First error:\t";
inline constexpr const char* instrument_state = "State of the instrument";

// ---- Product data ----

inline constexpr const char* dll_version = "DLL version";
inline constexpr const char* communication_port = "Used communication port";
inline constexpr const char* data_rate = "Data transfer rate";

inline constexpr const char* product_identification = "Product identification";
inline constexpr const char* product_number = "Product number";
inline constexpr const char* firmware_version = "Firmware version";
inline constexpr const char* firmware_date = "Firmware date";
inline constexpr const char* device_type = "Device type";
inline constexpr const char* hardware_type = "Hardware type";
inline constexpr const char* hardware_version = "Hardware version";
inline constexpr const char* fpga_version = "FPGA version";
inline constexpr const char* manufacturing_date = "Product manufacturing date";

inline constexpr const char* device_enabled = "Device enabled";
inline constexpr const char* overall = "Overall state";
inline constexpr const char* base_leds = "LED data of the base device";
inline constexpr const char* leds = "LED data";
inline constexpr const char* red = "Red";
inline constexpr const char* green = "Green";
inline constexpr const char* blue = "Blue";
inline constexpr const char* color = "Color";
inline constexpr const char* device_state = "Device state";
inline constexpr const char* interlock_state = "Interlock state";
inline constexpr const char* hv_supply_interlock_mask = "HV-PSU interlock enable mask";
inline constexpr const char* heat_controller_interlock_mask =
    "Heat-controller interlock enable mask";
inline constexpr const char* voltage_state = "Voltage state";
inline constexpr const char* power_monitors = "Power monitor state";
inline constexpr const char* temperature_state = "Temperature state";
inline constexpr const char* fan_state = "Fan state";
inline constexpr const char* fan_switch = "Function of the slide switch 'Fan'";
inline constexpr const char* inputs = "Device input levels";
inline constexpr const char* uptime = "Device uptime";
inline constexpr const char* operation_time = "Operation time";
inline constexpr const char* total = "total";

inline constexpr const char* module_state = "Module state";
inline constexpr const char* activation_state = "Activation state";
inline constexpr const char* base_unit_name = "Base unit";
inline constexpr const char* hardware_limits = "Hardware limits";
inline constexpr const char* voltage = "voltage";
inline constexpr const char* current = "current";
inline constexpr const char* power = "power";
inline constexpr const char* temperature = "temperature";
inline constexpr const char* target_power = "Target heater power";
inline constexpr const char* target_temperature = "Target heater temperature";
inline constexpr const char* target_voltage = "Target output voltage";
inline constexpr const char* channels = "Measurement channels";
inline constexpr const char* voltage_channel = "Voltage";
inline constexpr const char* current_channel = "Current";

inline constexpr const char* configurations = "Configuration properties:";
inline constexpr const char* data_size = "Size of configuration data";
inline constexpr const char* name_size = "Size of configuration name";
inline constexpr const char* active_sets = "Number of active configurations";
inline constexpr const char* deleted_sets = "Number of deleted configurations";

// ---- Steps ----

inline constexpr const char* waiting_for_uptime = "Waiting for uptime of ";
inline constexpr const char* settings_saved = "Current configuration data has been retrieved";
inline constexpr const char* settings_restored = "Current configuration data has been restored";

inline constexpr const char* enabling = "Enabling the device...";
inline constexpr const char* disabling = "Disabling the device...";
inline constexpr const char* device_is = "Device is ";
inline constexpr const char* device_has_been = "Device has been ";
inline constexpr const char* activating = "Activating the module...";
inline constexpr const char* deactivating = "Deactivating the module...";
inline constexpr const char* module_has_been = "Module has been ";

inline constexpr const char* response_time = "Measuring communication response time";
inline constexpr const char* transfer_time = "Measuring communication transfer time";
inline constexpr const char* cpu_data = "CPU data";
inline constexpr const char* housekeeping = "Housekeeping data";
inline constexpr const char* fan_data = "Fan data";
inline constexpr const char* state = "state";
inline constexpr const char* fan_good = "OK";
inline constexpr const char* fan_failed = "Fail"; ///< Kept: with a capital letter.
inline constexpr const char* period = "period";

inline constexpr const char* base_unit_missing = "Not found, skipped";
inline constexpr const char* no_base_unit = "The device type is not that of a base unit, skipped";
inline constexpr const char* no_module = "No module found, skipped";
inline constexpr const char* wrong_module = "The device type does not fit the slot, skipped";

inline constexpr const char* setting_channels = "Setting measurement channels...";
inline constexpr const char* range_has_been = " range has been set to ";
inline constexpr const char* low_range_output = "Output data (low range)";
inline constexpr const char* high_range_output = "Output data (high range)";
inline constexpr const char* positive_output = "Output data (positive)";
inline constexpr const char* negative_output = "Output data (negative)";

inline constexpr const char* monitoring = "Monitoring data";
inline constexpr const char* power_limit = "Power limit";
inline constexpr const char* current_limit = "Current limit";
inline constexpr const char* voltage_limit = "Voltage limit";
inline constexpr const char* is_set_to = " set to ";
inline constexpr const char* zero_volts = "0V";

/// Above the table of an HV-supply's outputs; formats of address and range, and of the polarity.
inline constexpr const char testing_output[] = "Testing module %u output voltage, range %uV:";
inline constexpr const char output_table[] = "Output Data (%s):"; ///< Kept: a capital D, only here.
/// The columns of that table.
inline constexpr const char* target_set = "Target voltage set";
inline constexpr const char* target_get = "Target voltage get";
inline constexpr const char* measured_voltage = "Measured voltage";
inline constexpr const char* measured_period = "Period";
inline constexpr const char* measured_current = "Measured current";

/// The label of a display's table as the report shows it: without the blanks, commas and colons
/// that stand around it there.
[[nodiscard]] constexpr std::string_view bare_label(std::string_view label)
{
    while (!label.empty() && (label.front() == ' ' || label.front() == ','))
        label.remove_prefix(1);
    while (!label.empty() && (label.back() == ' ' || label.back() == ':'))
        label.remove_suffix(1);
    return label;
}

} // namespace report_text
