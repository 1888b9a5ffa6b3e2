#include "protocol/report/hardware_text.h"

#include "frame/text/format.h"
#include "instrument/controller_hardware.h"
#include "instrument/device_types.h"
#include "instrument/module_hardware.h"
#include "instrument/words.h"
#include "protocol/report/report_items.h"
#include "protocol/report/report_texts.h"

namespace
{

HardwareText base_unit_text(std::uint32_t word)
{
    using namespace base_unit_hardware;
    return {type_name(word) + formatted(", %uV", supply_voltage.of(word)),
            {{"supply voltage", formatted("%uV", supply_voltage.of(word))},
             {"maximum power", formatted("%uW", maximum_power.of(word))},
             {"slot number", formatted("%u", slots.of(word))},
             {"fan number", formatted("%u", fans.of(word))}}};
}

HardwareText heat_controller_text(std::uint32_t word)
{
    using namespace heat_controller_hardware;
    return {type_name(word),
            {{"supply voltage", formatted("%.4lfV", supply_voltage(word))},
             {"maximum supply current", formatted("%.4lfA", maximum_current(word))},
             {"interlock number", formatted("%u", interlocks.of(word))},
             {"channel number", formatted("%u", channels.of(word))}}};
}

HardwareText hv_supply_text(std::uint32_t word)
{
    using namespace hv_supply_hardware;
    const std::uint32_t unipolar = unipolar_outputs.of(word);
    return {type_name(word),
            {{"voltage range", formatted("%uV", voltage_range.of(word))},
             {"output", output_kind(word)},
             {"number of current ranges", formatted("%u", current_ranges.of(word))},
             {"lowest current range", formatted("1E%dA", lowest_current_exponent(word))},
             {"highest current range", formatted("1E%dA", highest_current_exponent(word))},
             {"bipolar outputs", formatted("%u", bipolar_outputs.of(word))},
             // Kept: both numbers come from one field of the word, see unipolar_outputs.
             {"positive outputs", formatted("%u", unipolar)},
             {"negative outputs", formatted("%u", unipolar)}}};
}

const char* device_type_name(std::uint16_t code, bool is_controller)
{
    if (is_controller)
        return code == controller_device_type ? controller_type_name : nullptr;
    const ModuleType* type = find_module_type(code);
    return type != nullptr ? type->name : nullptr;
}

} // namespace

std::string device_type_text(std::uint16_t code, bool is_controller)
{
    const char* name = device_type_name(code, is_controller);
    return hex_text(code, 4) + (name != nullptr ? std::string{" ("} + name + ')' : "");
}

HardwareText controller_hardware_text(std::uint32_t word)
{
    HardwareText text{hex_text(word, 8),
                      {{"NVM size", formatted("%uKiB", controller_hardware::memory_size(word))}}};
    for (const BitField& field : controller_hardware::fields)
        text.properties.push_back(
            {std::string{report_text::bare_label(field.label)}, bare(field.word(word).text)});
    return text;
}

HardwareText module_hardware_text(std::uint16_t device_type, std::uint32_t word)
{
    HardwareText text;
    if (device_type == module_type::base_unit)
        text = base_unit_text(word);
    else if (device_type == module_type::heat_controller)
        text = heat_controller_text(word);
    else if (device_type == module_type::hv_supply)
        text = hv_supply_text(word);
    const std::string name = text.word.empty() ? "" : " (" + text.word + ')';
    text.word = hex_text(word, 8) + name;
    return text;
}
