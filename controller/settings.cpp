#include "controller/settings.h"

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/bit_fields.h"
#include "instrument/status_words.h"
#include "instrument/words.h"

namespace
{

/// Sets the device enable and tells what was sent.
void set_enable(bool enable)
{
    progress("Enable/disable device:\r\n");
    if (!call(LIB(SetEnable), static_cast<std::uint8_t>(enable)))
        return;
    console.print("Device was ");
    console.print(enabled_or_disabled(enable));
    console.print("\n");
}

/// One line: the value in hexadecimal, its low eight bits, and what they mean.
void print_setting(const char* text, std::uint32_t value, const char* before_fields,
                   std::span<const BitField> fields)
{
    console.print("%s", text);
    console.print(Color::value, "%02Xh", value);
    console.print("=");
    console.print(Color::value, "%s", bits_text(value, 8).c_str());
    console.print("%s", before_fields);
    print_fields(fields, value);
    console.print("\r\n");
}

void print_mask(const char* text, std::uint32_t mask)
{
    print_setting(text, mask, ", interlock enable: ", interlock_mask_fields);
}

void print_fan_switch(const char* text, std::uint32_t function)
{
    print_setting(text, function, "", fan_switch_fields);
}

} // namespace

void enable_device(const Given&)
{
    set_enable(true);
}

void disable_device(const Given&)
{
    set_enable(false);
}

void show_enable_state(const Given&)
{
    progress("Getting enable state of the device:\r\n");
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return;
    console.print("Device is ");
    console.print(enabled_or_disabled(enabled != 0));
    console.print("\n");
}

void set_hv_supply_interlock_mask(const Given& given)
{
    progress("Setting HV-PSU interlock enable mask:\r\n");
    if (call(LIB(SetHVsupplyInterlockEnable), given.number))
        print_mask("HV-PSU interlock enable mask set to: ", given.number);
}

void show_hv_supply_interlock_mask(const Given&)
{
    progress("Getting HV-PSU interlock enable mask:\r\n");
    std::uint8_t mask = 0;
    if (call(LIB(GetHVsupplyInterlockEnable), &mask))
        print_mask("HV-PSU interlock enable mask: ", mask);
}

void set_heat_controller_interlock_mask(const Given& given)
{
    progress("Setting heat-controller interlock enable mask:\r\n");
    if (call(LIB(SetHeatCtrlInterlockEnable), given.number))
        print_mask("Heat-controller interlock enable mask set to: ", given.number);
}

void show_heat_controller_interlock_mask(const Given&)
{
    progress("Getting heat-controller interlock enable mask:\r\n");
    std::uint8_t mask = 0;
    if (call(LIB(GetHeatCtrlInterlockEnable), &mask))
        print_mask("Heat-controller interlock enable mask: ", mask);
}

void set_fan_switch_function(const Given& given)
{
    progress("Setting function of the slide switch 'Fan':\r\n");
    if (call(LIB(SetFanSwitchOverride), given.number))
        print_fan_switch("Function of the slide switch 'Fan' set to: ", given.number);
}

void show_fan_switch_function(const Given&)
{
    progress("Getting function of the slide switch 'Fan':\r\n");
    std::uint8_t function = 0;
    if (call(LIB(GetFanSwitchOverride), &function))
        print_fan_switch("Function of the slide switch 'Fan': ", function);
}

void restart_controller(const Given&)
{
    console.print("Restarting the controller, please wait...\r\n");
    if (call(LIB(Restart)))
        console.print("Controller restarted\r\n");
}
