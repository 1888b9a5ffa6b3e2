/// The device library's functions as data: every name with its parameters, in the order of the
/// interface.
///
/// The program looks the functions up by these names and calls none that is not here. The simulated
/// instrument takes names and types from here for its trace and its scenarios. A function that does
/// not match its row compiles in neither.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace devlib
{

enum class Kind : std::uint8_t { none, u8, u16, u32, i32, real, real32, text, bytes };
enum class Way : std::uint8_t { in, out, in_out };

/// A name that is held in place: a table of them needs no pointers, which the dynamic linker would
/// have to set in every process.
template <std::size_t capacity>
struct FixedName {
    char text[capacity]{};

    constexpr FixedName() = default;
    constexpr FixedName(std::string_view name)
    {
        for (std::size_t i = 0; i < name.size(); ++i)
            text[i] = name[i]; // one that is too long does not compile
        text[name.size()] = '\0';
    }
    constexpr FixedName(const char* name) : FixedName(std::string_view(name)) {}
    constexpr operator std::string_view() const { return text; }
};

struct Parameter {
    FixedName<22> name;
    Kind kind = Kind::none;
    Way way = Way::out;
    bool hexadecimal = false; ///< how the trace shows it
    std::uint16_t count = 1; ///< elements of an array, bytes of a text buffer; 0 = as many as asked
};

enum class Returns : std::uint8_t { status, version, text };

/// What a call needs: an open port and its answer time, or the library alone. Reports tell about
/// the last failed call and are never a failed call themselves.
enum class Reach : std::uint8_t { device, library, report };

inline constexpr std::size_t most_parameters = 11;

/// What all names begin with.
inline constexpr std::string_view function_prefix = "COM_KOV_CTRL_";

struct FunctionInfo {
    FixedName<46> full_name;
    std::array<Parameter, most_parameters> parameters{};
    Returns returns = Returns::status;
    Reach reach = Reach::device;

    /// Without the prefix that all functions share.
    [[nodiscard]] constexpr std::string_view name() const
    {
        return std::string_view(full_name).substr(function_prefix.size());
    }
    [[nodiscard]] constexpr std::size_t parameter_count() const
    {
        std::size_t count = 0;
        while (count < most_parameters && parameters[count].kind != Kind::none)
            ++count;
        return count;
    }
};

namespace rows
{
// clang-format off
constexpr Parameter flag(std::string_view name, std::uint16_t count = 1) { return {name, Kind::u8, Way::out, false, count}; }
constexpr Parameter bits8(std::string_view name, std::uint16_t count = 1) { return {name, Kind::u8, Way::out, true, count}; }
constexpr Parameter bits16(std::string_view name, std::uint16_t count = 1) { return {name, Kind::u16, Way::out, true, count}; }
constexpr Parameter bits32(std::string_view name) { return {name, Kind::u32, Way::out, true}; }
constexpr Parameter u16(std::string_view name) { return {name, Kind::u16}; }
constexpr Parameter u32(std::string_view name) { return {name, Kind::u32}; }
constexpr Parameter i32(std::string_view name) { return {name, Kind::i32}; }
constexpr Parameter real(std::string_view name) { return {name, Kind::real}; }
constexpr Parameter text(std::string_view name, std::uint16_t count) { return {name, Kind::text, Way::out, false, count}; }
constexpr Parameter bytes(std::string_view name, std::uint16_t count) { return {name, Kind::bytes, Way::out, true, count}; }
constexpr Parameter in(Parameter parameter) { parameter.way = Way::in; return parameter; }
constexpr Parameter in_out(Parameter parameter) { parameter.way = Way::in_out; return parameter; }

constexpr Parameter address = in(u32("address"));
constexpr Parameter index = in(u16("index"));

inline constexpr std::array<FunctionInfo, 114> functions{{
    // Session and communication
    {"COM_KOV_CTRL_GetSWVersion", {}, Returns::version, Reach::library},
    {"COM_KOV_CTRL_Open", {in(flag("port"))}, Returns::status, Reach::library},
    {"COM_KOV_CTRL_Close", {}},
    {"COM_KOV_CTRL_OpenDebugFile", {in(text("fileName", 0))}, Returns::status, Reach::library},
    {"COM_KOV_CTRL_CloseDebugFile", {}, Returns::status, Reach::library},
    {"COM_KOV_CTRL_SetBaudRate", {in_out(u32("baud"))}},
    {"COM_KOV_CTRL_GetBufferState", {flag("empty")}},
    {"COM_KOV_CTRL_Purge", {}},
    {"COM_KOV_CTRL_DevicePurge", {flag("purged")}},
    {"COM_KOV_CTRL_Restart", {}},
    {"COM_KOV_CTRL_GetErrorMessage", {}, Returns::text, Reach::report},
    {"COM_KOV_CTRL_GetIOState", {u32("state")}, Returns::status, Reach::report},
    {"COM_KOV_CTRL_GetIOStateMessage", {in(u32("state"))}, Returns::text, Reach::report},
    {"COM_KOV_CTRL_GetCommError", {u32("error")}, Returns::status, Reach::report},
    {"COM_KOV_CTRL_GetCommErrorMessage", {in(u32("error"))}, Returns::text, Reach::report},
    // Controller
    {"COM_KOV_CTRL_GetProductID", {text("identification", 84)}},
    {"COM_KOV_CTRL_GetProductNo", {i32("number")}},
    {"COM_KOV_CTRL_GetManufDate", {u16("year"), u16("week")}},
    {"COM_KOV_CTRL_GetHwVersion", {bits16("version")}},
    {"COM_KOV_CTRL_GetFwVersion", {bits16("version")}},
    {"COM_KOV_CTRL_GetFwDate", {text("date", 12)}},
    {"COM_KOV_CTRL_GetDevType", {bits16("type")}},
    {"COM_KOV_CTRL_GetHwType", {bits32("type")}},
    {"COM_KOV_CTRL_GetUptimeInt", {u32("seconds"), u16("milliseconds"), u32("totalSeconds"), u16("totalMilliseconds")}},
    {"COM_KOV_CTRL_GetOptimeInt", {u32("seconds"), u16("milliseconds"), u32("totalSeconds"), u16("totalMilliseconds")}},
    {"COM_KOV_CTRL_GetHousekeeping", {real("voltage24"), real("voltage5"), real("voltage33"), real("temperatureCPU"), real("temperaturePSU")}},
    {"COM_KOV_CTRL_GetCPUdata", {real("load"), real("frequency")}},
    {"COM_KOV_CTRL_GetFanData", {flag("failed"), u16("reserved"), u16("setSpeed"), u16("measuredSpeed"), {"pwm", Kind::real32}}},
    {"COM_KOV_CTRL_GetLEDData", {flag("red"), flag("green"), flag("blue")}},
    {"COM_KOV_CTRL_GetState", {bits16("state")}},
    {"COM_KOV_CTRL_GetDeviceState", {bits8("state")}},
    {"COM_KOV_CTRL_GetVoltageState", {bits8("state")}},
    {"COM_KOV_CTRL_GetTemperatureState", {bits8("state")}},
    {"COM_KOV_CTRL_GetFanState", {bits8("state")}},
    {"COM_KOV_CTRL_GetInterlockState", {bits16("state")}},
    {"COM_KOV_CTRL_GetInputs", {flag("interlockFront"), flag("interlockRear"), flag("fanEnabled")}},
    {"COM_KOV_CTRL_GetPowerMonitors", {flag("acInput"), flag("dcOutput")}},
    {"COM_KOV_CTRL_GetCompleteState", {bits8("dataReady"), bits8("deviceState"), bits8("voltageState"), bits8("temperatureState"), bits8("fanState"), bits16("interlockState"), bits16("state"), bits8("moduleDataReady", 5), bits16("moduleState", 5)}},
    {"COM_KOV_CTRL_GetDataReadyFlags", {bits8("flags")}},
    // Settings
    {"COM_KOV_CTRL_GetEnable", {flag("enable")}},
    {"COM_KOV_CTRL_SetEnable", {in(flag("enable"))}},
    {"COM_KOV_CTRL_GetHVsupplyInterlockEnable", {bits8("mask")}},
    {"COM_KOV_CTRL_SetHVsupplyInterlockEnable", {in(bits32("mask"))}},
    {"COM_KOV_CTRL_GetHeatCtrlInterlockEnable", {bits8("mask")}},
    {"COM_KOV_CTRL_SetHeatCtrlInterlockEnable", {in(bits32("mask"))}},
    {"COM_KOV_CTRL_GetFanSwitchOverride", {bits8("function")}},
    {"COM_KOV_CTRL_SetFanSwitchOverride", {in(bits32("function"))}},
    // Modules
    {"COM_KOV_CTRL_GetModulePresence", {flag("valid"), u32("slotCount"), flag("flags", 8)}},
    {"COM_KOV_CTRL_UpdateModulePresence", {}},
    {"COM_KOV_CTRL_RescanModules", {}},
    {"COM_KOV_CTRL_RescanModule", {address}},
    {"COM_KOV_CTRL_RestartModule", {address}},
    {"COM_KOV_CTRL_GetModuleBufferState", {address, flag("empty")}},
    {"COM_KOV_CTRL_ModulePurge", {address, flag("purged")}},
    {"COM_KOV_CTRL_GetScannedModuleState", {flag("changed")}},
    {"COM_KOV_CTRL_GetScannedModuleParams", {address, i32("scannedProductNo"), i32("savedProductNo"), bits32("scannedHwType"), bits32("savedHwType")}},
    {"COM_KOV_CTRL_SetScannedModuleState", {}},
    {"COM_KOV_CTRL_GetModuleProductID", {address, text("identification", 84)}},
    {"COM_KOV_CTRL_GetModuleProductNo", {address, i32("number")}},
    {"COM_KOV_CTRL_GetModuleManufDate", {address, u16("year"), u16("week")}},
    {"COM_KOV_CTRL_GetModuleHwVersion", {address, bits16("version")}},
    {"COM_KOV_CTRL_GetModuleFwVersion", {address, bits16("version")}},
    {"COM_KOV_CTRL_GetModuleFwDate", {address, text("date", 12)}},
    {"COM_KOV_CTRL_GetModuleDevType", {address, u16("type")}},
    {"COM_KOV_CTRL_GetModuleHwType", {address, bits32("type")}},
    {"COM_KOV_CTRL_GetModuleUptimeInt", {address, u32("seconds"), u16("milliseconds"), u32("totalSeconds"), u16("totalMilliseconds")}},
    {"COM_KOV_CTRL_GetModuleOptimeInt", {address, u32("seconds"), u16("milliseconds"), u32("totalSeconds"), u16("totalMilliseconds")}},
    {"COM_KOV_CTRL_GetModuleCPUdata", {address, real("load")}},
    {"COM_KOV_CTRL_GetModuleLEDData", {address, flag("red"), flag("green"), flag("blue")}},
    {"COM_KOV_CTRL_GetModuleState", {address, bits16("state")}},
    {"COM_KOV_CTRL_GetModuleActivationState", {address, flag("state")}},
    {"COM_KOV_CTRL_SetModuleActivationState", {address, in(flag("state"))}},
    {"COM_KOV_CTRL_GetModuleDataReadyFlags", {address, bits8("flags")}},
    {"COM_KOV_CTRL_GetBaseHousekeeping", {flag("valid"), real("voltage33"), real("temperatureCPU")}},
    // Heat-controller
    {"COM_KOV_CTRL_GetHeatCtrlHousekeeping", {flag("valid"), real("voltage33"), real("temperatureCPU"), real("voltage5"), real("voltage24"), real("temperaturePSU")}},
    {"COM_KOV_CTRL_GetHeatCtrlHeaterTemperature", {real("temperature")}},
    {"COM_KOV_CTRL_SetHeatCtrlHeaterTemperature", {in(real("temperature"))}},
    {"COM_KOV_CTRL_GetHeatCtrlOutputVoltage", {real("voltage")}},
    {"COM_KOV_CTRL_GetHeatCtrlHeaterPower", {real("power")}},
    {"COM_KOV_CTRL_GetHeatCtrlVoltageLimit", {real("voltage")}},
    {"COM_KOV_CTRL_SetHeatCtrlVoltageLimit", {in(real("voltage"))}},
    {"COM_KOV_CTRL_GetHeatCtrlCurrentLimit", {real("current")}},
    {"COM_KOV_CTRL_SetHeatCtrlCurrentLimit", {in(real("current"))}},
    {"COM_KOV_CTRL_GetHeatCtrlPowerLimit", {real("power")}},
    {"COM_KOV_CTRL_SetHeatCtrlPowerLimit", {in(real("power"))}},
    {"COM_KOV_CTRL_GetHeatCtrlHwLimits", {real("voltage"), real("current"), real("power"), real("temperature")}},
    {"COM_KOV_CTRL_GetHeatCtrlMonitoring", {flag("ready"), real("outputVoltage"), real("heaterVoltage"), real("current"), real("temperature")}},
    {"COM_KOV_CTRL_GetHeatCtrlIlockState", {bits8("state")}},
    // HV-supply
    {"COM_KOV_CTRL_GetHVsupplyFpgaVersion", {address, bits32("version")}},
    {"COM_KOV_CTRL_GetHVsupplyHousekeeping", {address, flag("valid"), real("voltage33"), real("temperatureCPU"), real("voltage5"), real("voltage24"), real("voltageMinus22"), real("voltage18"), real("voltageMinus18"), real("voltageVc"), real("analogGround")}},
    {"COM_KOV_CTRL_GetHVsupplyMeasRanges", {address, flag("negative"), flag("high")}},
    {"COM_KOV_CTRL_SetHVsupplyMeasRanges", {address, in(flag("negative")), in(flag("high"))}},
    {"COM_KOV_CTRL_GetHVsupplyOutputVoltage", {address, flag("valid"), real("voltage")}},
    {"COM_KOV_CTRL_GetHVsupplyOutputCurrent", {address, flag("valid"), real("current")}},
    {"COM_KOV_CTRL_GetHVsupplyTargetOutputVoltage", {address, real("voltage")}},
    {"COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage", {address, in(real("voltage"))}},
    {"COM_KOV_CTRL_GetHVsupplyParamsPWM", {address, real("period"), real("width"), real("phaseMeasured"), real("phaseSet"), real("voltageSet"), real("voltageMeasured"), flag("active"), bits8("dataReady")}},
    // Configuration
    {"COM_KOV_CTRL_GetCurrentConfig", {bytes("config", 53)}},
    {"COM_KOV_CTRL_SetCurrentConfig", {in(bytes("config", 53))}},
    {"COM_KOV_CTRL_GetConfigData", {index, bytes("config", 53)}},
    {"COM_KOV_CTRL_SetConfigData", {index, in(bytes("config", 53))}},
    {"COM_KOV_CTRL_GetConfigName", {index, text("name", 202)}},
    {"COM_KOV_CTRL_SetConfigName", {index, in(text("name", 202))}},
    {"COM_KOV_CTRL_GetConfigFlags", {index, flag("active"), flag("valid")}},
    {"COM_KOV_CTRL_SetConfigFlags", {index, in(flag("active")), in(flag("valid"))}},
    {"COM_KOV_CTRL_SaveCurrentConfig", {index}},
    {"COM_KOV_CTRL_LoadCurrentConfig", {index}},
    {"COM_KOV_CTRL_GetConfigList", {flag("active", 1023), flag("valid", 1023)}},
    {"COM_KOV_CTRL_GetConfigValues", {u16("setCount"), u16("dataSize"), u16("nameSize")}},
    // Memory
    {"COM_KOV_CTRL_GetMemoryData", {in(bits32("start")), in(u32("count")), bytes("data", 0)}},
    {"COM_KOV_CTRL_SetMemoryData", {in(bits32("start")), in(u32("count")), in(bytes("data", 0))}},
    {"COM_KOV_CTRL_UpdateMemoryData", {}},
    // Tests
    {"COM_KOV_CTRL_Test", {in(text("text", 0))}},
    {"COM_KOV_CTRL_TestModule", {in(text("text", 0)), address}},
}};
// clang-format on
} // namespace rows

using rows::functions;

inline constexpr std::size_t function_count = functions.size();
inline constexpr std::size_t no_function = function_count;

/// The full names alone, for who needs no more: without the parameters they are an eighth as long.
inline constexpr auto function_names = [] {
    std::array<decltype(FunctionInfo::full_name), function_count> names;
    for (std::size_t i = 0; i < function_count; ++i)
        names[i] = functions[i].full_name;
    return names;
}();

/// The row of a function, named with or without the prefix; no_function when there is none.
constexpr std::size_t find_function(std::string_view name)
{
    if (name.starts_with(function_prefix))
        name.remove_prefix(function_prefix.size());
    for (std::size_t i = 0; i < function_count; ++i)
        if (std::string_view(function_names[i]).substr(function_prefix.size()) == name)
            return i;
    return no_function;
}

template <typename T>
constexpr Kind kind_of()
{
    if constexpr (std::is_same_v<T, std::uint8_t>)
        return Kind::u8;
    else if constexpr (std::is_same_v<T, std::uint16_t>)
        return Kind::u16;
    else if constexpr (std::is_same_v<T, std::uint32_t>)
        return Kind::u32;
    else if constexpr (std::is_same_v<T, std::int32_t>)
        return Kind::i32;
    else if constexpr (std::is_same_v<T, double>)
        return Kind::real;
    else if constexpr (std::is_same_v<T, float>)
        return Kind::real32;
    else if constexpr (std::is_same_v<T, char>)
        return Kind::text;
    else
        return Kind::bytes; // a record
}

/// Whether a parameter of that C type is what a row tells.
template <typename T>
constexpr bool parameter_matches(const Parameter& parameter)
{
    using Value = std::remove_pointer_t<T>;
    constexpr bool is_result = std::is_pointer_v<T> && !std::is_const_v<Value>;
    constexpr Kind kind = kind_of<std::remove_const_t<Value>>();
    const bool is_bytes = parameter.kind == Kind::bytes && kind == Kind::u8 && std::is_pointer_v<T>;
    return (parameter.kind == kind || is_bytes) && (parameter.way != Way::in) == is_result;
}

/// Whether a function with these C parameters is what a row tells.
template <typename... Parameters>
constexpr bool parameters_match(const FunctionInfo& function)
{
    std::size_t i = 0;
    return function.parameter_count() == sizeof...(Parameters) &&
           (parameter_matches<Parameters>(function.parameters[i++]) && ...);
}

} // namespace devlib
