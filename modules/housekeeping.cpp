#include "modules/housekeeping.h"

#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/quantity_fields.h"
#include "instrument/addresses.h"
#include "instrument/module_readings.h"
#include "instrument/quantities.h"
#include "instrument/words.h"
#include "modules/addressing.h"

#include <cstdint>
#include <span>
#include <string>

namespace
{

using namespace housekeeping;
using Row = std::span<const LabelledQuantity<Record>>;

// ---- One line a module ----

constexpr LabelledQuantity<Record> base_unit_line[] = {{"+3V3:", plus_3_3}, {", CPU:", cpu}};
constexpr LabelledQuantity<Record> heat_controller_line[] = {{"+3V3:", plus_3_3},
                                                             {", +5V0:", plus_5},
                                                             {", +24V:", plus_24},
                                                             {", CPU:", cpu},
                                                             {", PSU:", psu}};
// Kept: no "+" before 5V0, no comma between -22V and +18V.
constexpr LabelledQuantity<Record> hv_supply_line[] = {
    {"+3V3:", plus_3_3},   {", 5V0:", plus_5},         {", +24V:", plus_24},
    {", -22V:", minus_22}, {"+18V:", plus_18},         {", -18V:", minus_18},
    {", +Vc:", vc},        {", AGnd:", analog_ground}, {", CPU:", cpu}};

Row line_of(unsigned address)
{
    if (address == base_unit)
        return base_unit_line;
    return address == heat_controller ? Row{heat_controller_line} : Row{hv_supply_line};
}

void print(const Quantity<Record>& quantity, const Record& record)
{
    const double value = quantity.value(record).value_or(0.0);
    console.print(quantity.color(value), "%s", number_text(value, quantity.format).c_str());
}

// ---- Live displays ----

constexpr LabelledQuantity<Record> heat_controller_row[] = {{"Voltages: +3V3:", plus_3_3},
                                                            {"+5V0:", plus_5},
                                                            {"+24V:", plus_24},
                                                            {"Temperatures: CPU:", cpu},
                                                            {"PSU:", psu}};
constexpr LabelledQuantity<Record> hv_supply_row_1[] = {{"Voltages: +3V3:", signed_3_3},
                                                        {"+5V0:", signed_5},
                                                        {"+24V:", signed_24},
                                                        {"-22V:", minus_22},
                                                        {"+Vc:", vc}};
// The first label ends where the one above it does.
constexpr LabelledQuantity<Record> hv_supply_row_2[] = {{"          AGnd:", analog_ground},
                                                        {"+18V:", plus_18},
                                                        {"-18V:", minus_18},
                                                        {"Temperatures: CPU:", cpu}};
constexpr Row heat_controller_rows[] = {heat_controller_row};
constexpr Row hv_supply_rows[] = {hv_supply_row_1, hv_supply_row_2};

using RecordReader = Failure (*)(unsigned address, Record& record);

void show_live(unsigned address, bool continuous, std::span<const Row> rows,
               RecordReader attempt_record)
{
    const std::string name = module_name(address);
    QuantityFields<Quantity<Record>> values;
    progress("Getting housekeeping data of %s:\r\n", name.c_str());
    run_live_display<Record>(
        {.title = "Housekeeping of " + name, .continuous = continuous, .key_first = true},
        [&](LiveFields& fields) {
            fields.place_rates(data_rates_in_header);
            for (const Row row : rows) {
                console.print("\r\n");
                console.skip(2);
                values.place_row(row);
            }
        },
        [&](Record& record) {
            const Failure failed = attempt_record(address, record);
            return !failed && record.valid == 0 ? Reading::nothing_new() : Reading{failed};
        },
        [&](const Record& record) { values.show(record); });
}

} // namespace

void show_module_housekeeping(const Given& given)
{
    for_one_or_all({.progress = "Getting housekeeping data of ",
                    .label = "Housekeeping data of ",
                    .label_end = ":  ",
                    .heading = "Housekeeping data:"},
                   given.address, [](const Module& module) {
                       Record record;
                       Failure failed = with_repeat(
                           [&] { return attempt_housekeeping(module.address, record); });
                       // Kept: in the list an HV-supply is reported under a name that no function
                       // has.
                       const bool is_hv_supply =
                           module.address != heat_controller && module.address != base_unit;
                       if (failed && module.in_list && is_hv_supply)
                           failed = Failure{"COM_KOV_CTRL_GetModuleHousekeeping"};
                       if (!succeeded(failed))
                           return false;
                       module.print_label();
                       for (const auto& [label, quantity] : line_of(module.address)) {
                           console.print("%s", label);
                           print(quantity, record);
                       }
                       return true;
                   });
}

void show_heat_controller_housekeeping(const Given& given)
{
    show_live(heat_controller, given.capital, heat_controller_rows, attempt_housekeeping);
}

void show_hv_supply_housekeeping(const Given& given)
{
    show_live(given.address, given.capital, hv_supply_rows, attempt_hv_supply_housekeeping);
}

void show_module_cpu_data(const Given& given)
{
    for_one_or_all(
        {.progress = "Getting CPU data of ", .label = "CPU data of ", .heading = "CPU data:"},
        given.address, [](const Module& module) {
            double load = 0.0;
            if (!call_twice(LIB(GetModuleCPUdata), module.address, &load))
                return false;
            module.print_label();
            console.print(Color::value, "%4.1lf%%", load);
            return true;
        });
}

void show_module_led_data(const Given& given)
{
    for_one_or_all(
        {.progress = "Getting LED data of ", .label = "LED data of ", .heading = "LED data:"},
        given.address, [](const Module& module) {
            std::uint8_t red = 0;
            std::uint8_t green = 0;
            std::uint8_t blue = 0;
            if (!call_twice(LIB(GetModuleLEDData), module.address, &red, &green, &blue))
                return false;
            module.print_label();
            console.print("Red: ");
            console.print(on_off(red != 0));
            console.print(", Green: ");
            console.print(on_off(green != 0));
            console.print(", Blue: ");
            console.print(on_off(blue != 0));
            console.print(", Color: ");
            console.print(led_color(red != 0, green != 0, blue != 0), "LED");
            return true;
        });
}
