#include "companion/report/limits.h"
#include "frame/text/format.h"
#include "instrument/supplies.h"
#include "protocol/report/report_texts.h"

namespace companion
{

namespace
{

constexpr const char* words =
    R"(# A controller that reports an error, or a run that begins with one, proves nothing.
controller/overall-state     is "0000h = On" "0001h = Stand-by"

# What the instrument itself says of its parts.
controller/fan/state         is OK
controller/device-state/*    is OK
controller/voltage-state/*   is OK
controller/temperature-state/* is OK
controller/power-monitor-state/* is OK
controller/fan-state/fan-OK  is OK

# An open interlock keeps the outputs off.
controller/interlock-state/resulting-values/* is OK

# The modules are those that were saved in the controller.
controller/module-scan       is OK
*/scan/product-number        is OK
*/scan/hardware-type         is OK
*/scan/presence              is present n/a

)";

constexpr const char* timing = R"(# The longest answer time that lets every display be steady.
controller/communication/response-time  ..50 ms
# 64 characters there and back at 9600 baud take 133 ms.
controller/communication/transfer-time  ..250 ms

# Measurements come at the rate of their source: once a second, ten and five times a second.
*/housekeeping/period        0.5..2 s
controller/fan/period        0.5..2 s
slot0/heater/*/period        50..200 ms
slot*/idle/*-range/period    50..200 ms
slot*/idle/*tive/period      100..400 ms
slot*/output/*/*/period      100..400 ms

# The controller makes the fan turn as fast as it says, within what fans vary.
controller/fan/speed-error   +-10 % of target

)";

constexpr const char* heater = R"(# Switched off means off.
slot0/heater/off/output-voltage  +-50 mV
slot0/heater/off/heater-voltage  +-50 mV
slot0/heater/off/current     +-10 mA
# What a run is limited by sits at its limit.
slot0/heater/*/limit-error   +-2 % of limit
# Each run gives the heater more power than the one before: it gets warmer (begin with a cold one).
slot0/heater/*/warming       0.01.. degC
# Full power for the time of a series is more than a degree.
slot0/heater/unlimited/temperature-span  1.. degC
# Power is voltage times current.
slot0/heater/*/power-error   +-2 % of power
# The resistance is one: it rises with the temperature, by less than a quarter over all runs.
slot0/heater/resistance-spread  ..25 %

)";

constexpr const char* outputs = R"(# The device shows what it was told to do.
slot*/output/*/*/read-back-error  +-1 mV
# The output is what was set; in a polarity that a unipolar supply lacks, nothing.
slot*/output/*/*/error       +-0.5 % of range +-1 % of target noise 0.1 % of range
# More with each target, about as much as the target rises (100 %).
slot*/output/*/*/increase    50..150 %
# Nothing is connected during the test: what flows is the leakage of the output, as of 10 GOhm.
slot*/output/*/load          5..20 GOhm
# It is a resistance: the current follows the voltage.
slot*/output/*/*/current-error  +-2 % of full
# Switched off means off.
slot*/idle/*tive/voltage     +-1 V
)";

std::string supply_rule(const char* pattern, const Supply& supply)
{
    return formatted("%-28s %g V +-%g %%\n", pattern, supply.nominal, supply.tolerance);
}

} // namespace

std::string default_limits()
{
    std::string text =
        "# The limits that acceptance reports are judged by. A rule a line; of those "
        "that fit, the last counts.\n\n";
    text += words;
    text += "# The tolerances with which the instrument's displays are coloured.\n";
    text += supply_rule("*/housekeeping/3V3", supply::plus_3_3);
    text += supply_rule("*/housekeeping/5V0", supply::plus_5);
    text += supply_rule("*/housekeeping/24V", supply::plus_24);
    text += supply_rule("slot*/housekeeping/-22V", supply::minus_22);
    text += supply_rule("slot*/housekeeping/18V", supply::plus_18);
    text += supply_rule("slot*/housekeeping/-18V", supply::minus_18);
    text += supply_rule("slot*/housekeeping/1V5", supply::vc);
    text += formatted("%-28s %g..%g degC\n", "*/housekeeping/CPU", good_temperature::lowest,
                      good_temperature::highest);
    text += formatted("%-28s %g..%g degC\n", "*/housekeeping/PSU", good_temperature::lowest,
                      good_temperature::highest);
    text += "# The displays know no tolerance of analog ground: it may be off as far as the 5 V.\n";
    text += formatted("%-28s +-%g V\n\n", "slot*/housekeeping/a-gnd",
                      supply::plus_5.nominal * supply::plus_5.tolerance / 100.0);
    text += timing;
    text += heater;
    text += outputs;
    return text;
}

} // namespace companion
