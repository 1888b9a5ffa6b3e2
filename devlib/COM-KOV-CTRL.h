/// The device library COM-KOV-CTRL: the only way to the instrument.
///
/// The library file is libCOM-KOV-CTRL.so (COM-KOV-CTRL.dll on Windows). It keeps the one open
/// port, so no function takes a handle: COM_KOV_CTRL_Open comes before every other device call
/// and COM_KOV_CTRL_Close after the last one; COM_KOV_CTRL_OpenDebugFile may come before Open,
/// COM_KOV_CTRL_CloseDebugFile comes at the very end.
///
/// A result of type int32_t is the status: 0 = success, anything else = failure. Results come
/// back through pointers to the caller's variables, which the caller sets to zero before the
/// call; they mean nothing after a failure, and none may be null. Flags are bytes, non-zero =
/// true. A returned text is zero-terminated and belongs to the library.
///
/// `address` is a module address: 0 = heat-controller slot, 1..3 = HV-supply slots, 128 = base
/// unit. `index` is the index of a configuration set, 0..1022.
#pragma once

#include <stdint.h>

/// What a library that implements these functions puts before each of them (its export mark).
#ifndef COM_KOV_CTRL_API
#define COM_KOV_CTRL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The configuration record as the library passes it: 53 packed bytes, little-endian fields.
typedef struct ConfigRecord {
    uint8_t bytes[53];
} ConfigRecord;

// ---- Session and communication ----

/// Library version, major in the high byte, minor in the low byte; no status.
COM_KOV_CTRL_API uint16_t COM_KOV_CTRL_GetSWVersion(void);

/// Open COM port 1..255; comes before every device call.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_Open(uint8_t port);

/// Close the port.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_Close(void);

/// Start the library's own trace into that file; may come before Open.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_OpenDebugFile(const char* fileName);

/// End the trace; called at the very end, also when the port was never opened.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_CloseDebugFile(void);

/// In/out: wanted data rate in baud, replaced by the rate now in use.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetBaudRate(uint32_t* baud);

/// Non-zero = device buffer empty.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetBufferState(uint8_t* empty);

/// Purge the port buffers of the computer.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_Purge(void);

/// Purge the device's buffers; non-zero = purged.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_DevicePurge(uint8_t* purged);

/// Restart the controller.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_Restart(void);

/// Text of the last library error.
COM_KOV_CTRL_API const char* COM_KOV_CTRL_GetErrorMessage(void);

/// Last I/O state.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetIOState(uint32_t* state);

/// Text of an I/O state.
COM_KOV_CTRL_API const char* COM_KOV_CTRL_GetIOStateMessage(uint32_t state);

/// Last communication error code.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetCommError(uint32_t* error);

/// Text of a communication error code.
COM_KOV_CTRL_API const char* COM_KOV_CTRL_GetCommErrorMessage(uint32_t error);

// ---- Controller ----

/// Identification text into a buffer of 84 bytes, zero-terminated.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetProductID(char* identification);

/// Product number.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetProductNo(int32_t* number);

/// Manufacturing date: year, calendar week.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetManufDate(uint16_t* year, uint16_t* week);

/// Hardware version, major in the high byte, minor in the low byte.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHwVersion(uint16_t* version);

/// Firmware version, major in the high byte, minor in the low byte.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetFwVersion(uint16_t* version);

/// Firmware date text into a buffer of 12 bytes, zero-terminated.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetFwDate(char* date);

/// Device-type code (8ED6h = this controller).
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetDevType(uint16_t* type);

/// Hardware-type word of the controller: bits 0..11 = size of the NVM in KiB, bit 12 = RS232 port,
/// bit 13 = USB port, bit 14 = internal LED, bit 15 = external LED, the others reserved.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHwType(uint32_t* type);

/// Time since the last start, then summed over the device's life.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetUptimeInt(uint32_t* seconds, uint16_t* milliseconds,
                                                   uint32_t* totalSeconds,
                                                   uint16_t* totalMilliseconds);

/// Operation time, current and total.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetOptimeInt(uint32_t* seconds, uint16_t* milliseconds,
                                                   uint32_t* totalSeconds,
                                                   uint16_t* totalMilliseconds);

/// 24 V, 5 V and 3.3 V supplies in V, CPU and PSU temperatures in degrees Celsius.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHousekeeping(double* voltage24, double* voltage5,
                                                      double* voltage33, double* temperatureCPU,
                                                      double* temperaturePSU);

/// CPU load as a fraction (1.0 = 100 %), clock in Hz.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetCPUdata(double* load, double* frequency);

/// Failure flag (0 = fan OK), a small value that is not shown (two bytes are reserved for it), set
/// and measured speed in rpm, PWM duty as a fraction (1.0 = 100 %).
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetFanData(uint8_t* failed, uint16_t* reserved,
                                                 uint16_t* setSpeed, uint16_t* measuredSpeed,
                                                 float* pwm);

/// LED colours, non-zero = on.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetLEDData(uint8_t* red, uint8_t* green, uint8_t* blue);

/// Overall state code.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetState(uint16_t* state);

/// Device-state bits.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetDeviceState(uint8_t* state);

/// Voltage-state bits.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetVoltageState(uint8_t* state);

/// Temperature-state bits.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetTemperatureState(uint8_t* state);

/// Fan-state bits.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetFanState(uint8_t* state);

/// Interlock word.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetInterlockState(uint16_t* state);

/// Input levels: interlock front state, interlock rear level, fan enabled.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetInputs(uint8_t* interlockFront, uint8_t* interlockRear,
                                                uint8_t* fanEnabled);

/// Power monitors, non-zero = good.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetPowerMonitors(uint8_t* acInput, uint8_t* dcOutput);

/// All status words in one transfer; the last two are arrays of 5: slots 0..3, then the base unit.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetCompleteState(uint8_t* dataReady, uint8_t* deviceState,
                                                       uint8_t* voltageState,
                                                       uint8_t* temperatureState, uint8_t* fanState,
                                                       uint16_t* interlockState, uint16_t* state,
                                                       uint8_t* moduleDataReady,
                                                       uint16_t* moduleState);

/// Data-ready flags of the controller: bit 0 = new housekeeping data, bit 1 = housekeeping data
/// overflowed, bit 2 = new fan data, bit 3 = fan data overflowed.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetDataReadyFlags(uint8_t* flags);

// ---- Settings ----

/// Device enable, non-zero = enabled.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetEnable(uint8_t* enable);

/// 1 = enable, 0 = disable the device.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetEnable(uint8_t enable);

/// Interlock enable mask of the HV-supplies.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyInterlockEnable(uint8_t* mask);

/// Sets what COM_KOV_CTRL_GetHVsupplyInterlockEnable reads; it is passed on as given.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHVsupplyInterlockEnable(uint32_t mask);

/// Interlock enable mask of the heat-controller.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlInterlockEnable(uint8_t* mask);

/// Sets what COM_KOV_CTRL_GetHeatCtrlInterlockEnable reads; it is passed on as given.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHeatCtrlInterlockEnable(uint32_t mask);

/// Function bits of the slide switch 'Fan'.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetFanSwitchOverride(uint8_t* function);

/// Sets what COM_KOV_CTRL_GetFanSwitchOverride reads; it is passed on as given.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetFanSwitchOverride(uint32_t function);

// ---- Modules ----

/// Validity flag, number of slots, presence flags (room for at least 8 bytes: the slots from index
/// 0, the base unit at index 4).
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModulePresence(uint8_t* valid, uint32_t* slotCount,
                                                        uint8_t* flags);

/// Refresh the presence flags in the controller.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_UpdateModulePresence(void);

/// Rescan the address pins of all modules.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_RescanModules(void);

/// Rescan one module's address pins.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_RescanModule(uint32_t address);

/// Restart one module.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_RestartModule(uint32_t address);

/// Non-zero = the module's buffer is empty.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleBufferState(uint32_t address, uint8_t* empty);

/// Purge the module's buffers; non-zero = purged.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_ModulePurge(uint32_t address, uint8_t* purged);

/// Non-zero = the scanned modules differ from the saved state.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetScannedModuleState(uint8_t* changed);

/// Product number and hardware type, each as scanned now and as saved.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetScannedModuleParams(uint32_t address,
                                                             int32_t* scannedProductNo,
                                                             int32_t* savedProductNo,
                                                             uint32_t* scannedHwType,
                                                             uint32_t* savedHwType);

/// Save the scanned module state in the controller.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetScannedModuleState(void);

/// Identification text into a buffer of 84 bytes, zero-terminated.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleProductID(uint32_t address, char* identification);

/// Product number.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleProductNo(uint32_t address, int32_t* number);

/// Manufacturing date: year, calendar week.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleManufDate(uint32_t address, uint16_t* year,
                                                         uint16_t* week);

/// Hardware version, major in the high byte, minor in the low byte.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleHwVersion(uint32_t address, uint16_t* version);

/// Firmware version, major in the high byte, minor in the low byte.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleFwVersion(uint32_t address, uint16_t* version);

/// Firmware date text into a buffer of 12 bytes, zero-terminated.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleFwDate(uint32_t address, char* date);

/// Device-type code (7220 base unit, 56092 heat-controller, 2573 HV-supply).
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleDevType(uint32_t address, uint16_t* type);

/// Hardware-type word.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleHwType(uint32_t address, uint32_t* type);

/// Time since the last start, then total.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleUptimeInt(uint32_t address, uint32_t* seconds,
                                                         uint16_t* milliseconds,
                                                         uint32_t* totalSeconds,
                                                         uint16_t* totalMilliseconds);

/// Operation time, current and total.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleOptimeInt(uint32_t address, uint32_t* seconds,
                                                         uint16_t* milliseconds,
                                                         uint32_t* totalSeconds,
                                                         uint16_t* totalMilliseconds);

/// CPU load in per cent.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleCPUdata(uint32_t address, double* load);

/// LED colours, non-zero = on.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleLEDData(uint32_t address, uint8_t* red,
                                                       uint8_t* green, uint8_t* blue);

/// Module state word.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleState(uint32_t address, uint16_t* state);

/// Activation state, non-zero = active.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleActivationState(uint32_t address, uint8_t* state);

/// 1 = activate, 0 = deactivate.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetModuleActivationState(uint32_t address, uint8_t state);

/// Data-ready flags of the module, in pairs ready/overflow: bits 0/1 monitoring, 2/3 housekeeping,
/// 4/5 output voltage, 6/7 output current.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetModuleDataReadyFlags(uint32_t address, uint8_t* flags);

/// Base unit: validity flag, 3.3 V supply in V, CPU temperature in degrees Celsius.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetBaseHousekeeping(uint8_t* valid, double* voltage33,
                                                          double* temperatureCPU);

// ---- Heat-controller ----

/// Validity flag, supplies in V, temperatures in degrees Celsius.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlHousekeeping(uint8_t* valid, double* voltage33,
                                                              double* temperatureCPU,
                                                              double* voltage5, double* voltage24,
                                                              double* temperaturePSU);

/// Target heater temperature in degrees Celsius; negative = off.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlHeaterTemperature(double* temperature);

/// Sets what COM_KOV_CTRL_GetHeatCtrlHeaterTemperature reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHeatCtrlHeaterTemperature(const double* temperature);

/// Target output voltage in V; negative = off.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlOutputVoltage(double* voltage);

/// Target heater power in W; negative = off.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlHeaterPower(double* power);

/// Maximum heater voltage in V.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlVoltageLimit(double* voltage);

/// Sets what COM_KOV_CTRL_GetHeatCtrlVoltageLimit reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHeatCtrlVoltageLimit(const double* voltage);

/// Maximum heater current in A.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlCurrentLimit(double* current);

/// Sets what COM_KOV_CTRL_GetHeatCtrlCurrentLimit reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHeatCtrlCurrentLimit(const double* current);

/// Maximum heater power in W.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlPowerLimit(double* power);

/// Sets what COM_KOV_CTRL_GetHeatCtrlPowerLimit reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHeatCtrlPowerLimit(const double* power);

/// Hardware limits in V, A, W and degrees Celsius.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlHwLimits(double* voltage, double* current,
                                                          double* power, double* temperature);

/// Non-zero = new measurement; V, V, A and degrees Celsius.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlMonitoring(uint8_t* ready, double* outputVoltage,
                                                            double* heaterVoltage, double* current,
                                                            double* temperature);

/// Interlock bits: 0 and 2 = interlock #1, 1 and 3 = interlock #2.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHeatCtrlIlockState(uint8_t* state);

// ---- HV-supply ----

/// FPGA version, major in bits 16..31, minor in bits 8..15.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyFpgaVersion(uint32_t address, uint32_t* version);

/// Validity flag, supplies in V, CPU temperature in degrees Celsius.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyHousekeeping(
    uint32_t address, uint8_t* valid, double* voltage33, double* temperatureCPU, double* voltage5,
    double* voltage24, double* voltageMinus22, double* voltage18, double* voltageMinus18,
    double* voltageVc, double* analogGround);

/// Non-zero = negative output voltage, non-zero = high current range.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyMeasRanges(uint32_t address, uint8_t* negative,
                                                            uint8_t* high);

/// Sets both flags, 1 or 0.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHVsupplyMeasRanges(uint32_t address, uint8_t negative,
                                                            uint8_t high);

/// Validity flag, measured output voltage in V.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyOutputVoltage(uint32_t address, uint8_t* valid,
                                                               double* voltage);

/// Validity flag, measured output current in A.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyOutputCurrent(uint32_t address, uint8_t* valid,
                                                               double* current);

/// Target output voltage in V; negative = off.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyTargetOutputVoltage(uint32_t address,
                                                                     double* voltage);

/// Sets what COM_KOV_CTRL_GetHVsupplyTargetOutputVoltage reads, passed by value.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage(uint32_t address,
                                                                     double voltage);

/// Times in s, voltages in V, active flag, data-ready flags (as GetModuleDataReadyFlags).
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetHVsupplyParamsPWM(uint32_t address, double* period,
                                                           double* width, double* phaseMeasured,
                                                           double* phaseSet, double* voltageSet,
                                                           double* voltageMeasured, uint8_t* active,
                                                           uint8_t* dataReady);

// ---- Configuration ----

/// Current configuration.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetCurrentConfig(ConfigRecord* config);

/// Sets what COM_KOV_CTRL_GetCurrentConfig reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetCurrentConfig(const ConfigRecord* config);

/// Record of a configuration set.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetConfigData(uint16_t index, ConfigRecord* config);

/// Sets what COM_KOV_CTRL_GetConfigData reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetConfigData(uint16_t index, const ConfigRecord* config);

/// Name of a set: all 202 bytes of the field are written, without a terminator when the name fills
/// it.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetConfigName(uint16_t index, char* name);

/// Sets the name: a field of 202 bytes; the name ends at the first zero byte or fills the field.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetConfigName(uint16_t index, const char* name);

/// Active flag (non-zero = not deleted), valid flag.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetConfigFlags(uint16_t index, uint8_t* active,
                                                     uint8_t* valid);

/// Sets what COM_KOV_CTRL_GetConfigFlags reads.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetConfigFlags(uint16_t index, uint8_t active, uint8_t valid);

/// The device stores its current configuration into the set and marks it.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SaveCurrentConfig(uint16_t index);

/// The device makes the set its current configuration.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_LoadCurrentConfig(uint16_t index);

/// Flags of all sets; two arrays with room for 1024 entries each, entries 0..1022 are used.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetConfigList(uint8_t* active, uint8_t* valid);

/// Number of sets, size of a record in bytes, size of a name in bytes.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetConfigValues(uint16_t* setCount, uint16_t* dataSize,
                                                      uint16_t* nameSize);

// ---- Memory ----

/// Read count bytes from address start.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_GetMemoryData(uint32_t start, uint32_t count, uint8_t* data);

/// Write count bytes from address start.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_SetMemoryData(uint32_t start, uint32_t count,
                                                    const uint8_t* data);

/// The controller takes over the written memory data.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_UpdateMemoryData(void);

// ---- Tests ----

/// One transfer of a zero-terminated text with the controller.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_Test(const char* text);

/// One transfer of a zero-terminated text with a module.
COM_KOV_CTRL_API int32_t COM_KOV_CTRL_TestModule(const char* text, uint32_t address);

#ifdef __cplusplus
}
#endif
