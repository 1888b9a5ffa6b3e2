/// The functions of the device library that an acceptance test calls. It begins only when all are
/// there: it must not come to an end in the middle, with outputs on.
#pragma once

#include "frame/device_call.h"

#include <cstddef>

// clang-format off
inline constexpr std::size_t functions_of_acceptance_test[] = {
    LIB(GetSWVersion).row, LIB(Purge).row, LIB(GetProductID).row, LIB(GetProductNo).row,
    LIB(GetManufDate).row, LIB(GetHwVersion).row, LIB(GetFwVersion).row, LIB(GetFwDate).row,
    LIB(GetDevType).row, LIB(GetHwType).row, LIB(GetUptimeInt).row, LIB(GetOptimeInt).row,
    LIB(GetHousekeeping).row, LIB(GetCPUdata).row, LIB(GetFanData).row, LIB(GetLEDData).row,
    LIB(GetState).row, LIB(GetDeviceState).row, LIB(GetVoltageState).row,
    LIB(GetTemperatureState).row, LIB(GetFanState).row, LIB(GetInterlockState).row,
    LIB(GetInputs).row, LIB(GetPowerMonitors).row, LIB(GetDataReadyFlags).row, LIB(GetEnable).row,
    LIB(SetEnable).row, LIB(GetHVsupplyInterlockEnable).row, LIB(GetHeatCtrlInterlockEnable).row,
    LIB(GetFanSwitchOverride).row, LIB(GetModulePresence).row, LIB(GetScannedModuleState).row,
    LIB(GetScannedModuleParams).row, LIB(GetModuleProductID).row, LIB(GetModuleProductNo).row,
    LIB(GetModuleManufDate).row, LIB(GetModuleHwVersion).row, LIB(GetModuleFwVersion).row,
    LIB(GetModuleFwDate).row, LIB(GetModuleDevType).row, LIB(GetModuleHwType).row,
    LIB(GetModuleCPUdata).row, LIB(GetModuleLEDData).row, LIB(GetModuleState).row,
    LIB(GetModuleActivationState).row, LIB(SetModuleActivationState).row,
    LIB(GetModuleDataReadyFlags).row, LIB(GetBaseHousekeeping).row,
    LIB(GetHeatCtrlHousekeeping).row, LIB(GetHeatCtrlHeaterTemperature).row,
    LIB(SetHeatCtrlHeaterTemperature).row, LIB(GetHeatCtrlHeaterPower).row,
    LIB(SetHeatCtrlVoltageLimit).row, LIB(SetHeatCtrlCurrentLimit).row,
    LIB(SetHeatCtrlPowerLimit).row, LIB(GetHeatCtrlHwLimits).row, LIB(GetHeatCtrlMonitoring).row,
    LIB(GetHVsupplyFpgaVersion).row, LIB(GetHVsupplyHousekeeping).row,
    LIB(GetHVsupplyMeasRanges).row, LIB(SetHVsupplyMeasRanges).row,
    LIB(GetHVsupplyOutputVoltage).row, LIB(GetHVsupplyOutputCurrent).row,
    LIB(GetHVsupplyTargetOutputVoltage).row, LIB(SetHVsupplyTargetOutputVoltage).row,
    LIB(GetCurrentConfig).row, LIB(SetCurrentConfig).row, LIB(GetConfigList).row,
    LIB(GetConfigValues).row, LIB(Test).row,
};
// clang-format on
