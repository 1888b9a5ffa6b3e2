#include "simulator/model/heater.h"

#include "simulator/model/config_record.h"

#include <algorithm>
#include <cmath>

namespace simulator
{

namespace
{

/// Watt per degree by which the controller asks for more than the temperature needs to stay.
constexpr double controller_gain = 5.0;

double resistance_at(const HeaterModel& model, double temperature)
{
    return model.resistance * (1 + model.resistance_rise * (temperature - 25.0));
}

/// The heater voltage that the controller sets: what its demand takes, within all limits.
double limited_voltage(const Instrument& instrument, double demand, double resistance)
{
    const HeaterModel& model = instrument.physical.heater;
    const ConstConfigBytes config = current_config(instrument);
    const double power = std::min({demand, heater_power_limit(config), model.power_limit});
    const double current = std::min(heater_current_limit(config), model.current_limit);
    const double supply = main_supply(instrument) * resistance / (resistance + model.wires);
    return std::max(0.0, std::min({std::sqrt(power * resistance), current * resistance,
                                   heater_voltage_limit(config), model.voltage_limit, supply}));
}

} // namespace

void step_heater(Instrument& instrument, double seconds, bool measure)
{
    Heater& heater = instrument.heater;
    const HeaterModel& model = instrument.physical.heater;
    const double resistance = resistance_at(model, heater.temperature);
    if (heater.controlling) {
        const double target =
            std::min(heater_target(current_config(instrument)), model.temperature_limit);
        heater.demand = std::max(0.0, (target - model.ambient) / model.thermal_resistance +
                                          controller_gain * (target - heater.temperature));
        heater.heater_voltage = limited_voltage(instrument, heater.demand, resistance);
    } else {
        heater.demand = -1;
        heater.heater_voltage = 0;
    }
    heater.current = heater.heater_voltage / resistance;
    const double loss = (heater.temperature - model.ambient) / model.thermal_resistance;
    heater.temperature +=
        (heater.heater_voltage * heater.current - loss) / model.heat_capacity * seconds;
    if (measure)
        heater.sample = {heater.heater_voltage + heater.current * model.wires,
                         heater.heater_voltage, heater.current, heater.temperature};
}

} // namespace simulator
