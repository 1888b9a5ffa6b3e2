// The functions that the full screen calls in its cycles: everything is ready in every reading,
// every value is another one, and so is every bit of the status words.

#include "bench/library.h"
#include "devlib/COM-KOV-CTRL.h"

#include <cstdint>

namespace
{

/// Numbers that look like chance.
std::uint32_t next_number()
{
    static std::uint32_t number = 1;
    number = number * 1664525U + 1013904223U;
    return number >> 8;
}

void change(std::uint8_t& word)
{
    word = static_cast<std::uint8_t>(next_number());
}

void change(std::uint16_t& word)
{
    word = static_cast<std::uint16_t>(next_number());
}

/// A value within 3 per cent of the nominal one: good, too low or too high.
double value_near(double nominal)
{
    return nominal * (0.97 + 0.06 * (next_number() & 0xFFFF) / 0xFFFF);
}

} // namespace

std::int32_t COM_KOV_CTRL_GetCompleteState(std::uint8_t* dataReady, std::uint8_t* deviceState,
                                           std::uint8_t* voltageState,
                                           std::uint8_t* temperatureState, std::uint8_t* fanState,
                                           std::uint16_t* interlockState, std::uint16_t* state,
                                           std::uint8_t* moduleDataReady,
                                           std::uint16_t* moduleState)
{
    bench::take_answer_time();
    constexpr std::uint8_t all_groups = 0x55; // in the even bits
    constexpr std::uint8_t overflows = 0xAA;  // of some groups
    const auto all_ready = [] {
        return static_cast<std::uint8_t>(all_groups | (next_number() & overflows));
    };
    *dataReady = all_ready();
    for (std::uint8_t* word : {deviceState, voltageState, temperatureState, fanState})
        change(*word);
    change(*interlockState);
    constexpr unsigned first_states = 0x18; // and the unknown ones behind them
    *state = static_cast<std::uint16_t>(next_number() % first_states);
    for (int unit = 0; unit < 5; ++unit) {
        moduleDataReady[unit] = all_ready();
        change(moduleState[unit]);
    }
    return 0;
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlHousekeeping(std::uint8_t* valid, double* voltage33,
                                                  double* temperatureCPU, double* voltage5,
                                                  double* voltage24, double* temperaturePSU)
{
    bench::take_answer_time();
    *valid = 1;
    *voltage33 = value_near(3.3);
    *temperatureCPU = value_near(40.0);
    *voltage5 = value_near(5.0);
    *voltage24 = value_near(24.0);
    *temperaturePSU = value_near(40.0);
    return 0;
}

std::int32_t COM_KOV_CTRL_GetBaseHousekeeping(std::uint8_t* valid, double* voltage33,
                                              double* temperatureCPU)
{
    bench::take_answer_time();
    *valid = 1;
    *voltage33 = value_near(3.3);
    *temperatureCPU = value_near(40.0);
    return 0;
}

std::int32_t COM_KOV_CTRL_GetHVsupplyHousekeeping(std::uint32_t, std::uint8_t* valid,
                                                  double* voltage33, double* temperatureCPU,
                                                  double* voltage5, double* voltage24,
                                                  double* voltageMinus22, double* voltage18,
                                                  double* voltageMinus18, double* voltageVc,
                                                  double* analogGround)
{
    bench::take_answer_time();
    *valid = 1;
    *voltage33 = value_near(3.3);
    *temperatureCPU = value_near(40.0);
    *voltage5 = value_near(5.0);
    *voltage24 = value_near(24.0);
    *voltageMinus22 = value_near(-22.0);
    *voltage18 = value_near(18.0);
    *voltageMinus18 = value_near(-18.0);
    *voltageVc = value_near(1.5);
    *analogGround = value_near(1.0) - 1.0;
    return 0;
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlMonitoring(std::uint8_t* ready, double* outputVoltage,
                                                double* heaterVoltage, double* current,
                                                double* temperature)
{
    bench::take_answer_time();
    *ready = 1;
    *outputVoltage = value_near(20.0);
    *heaterVoltage = value_near(19.0);
    *current = value_near(4.0);
    *temperature = value_near(150.0);
    return 0;
}

std::int32_t COM_KOV_CTRL_GetHVsupplyOutputVoltage(std::uint32_t, std::uint8_t* valid,
                                                   double* voltage)
{
    bench::take_answer_time();
    *valid = 1;
    *voltage = value_near(1000.0);
    return 0;
}

std::int32_t COM_KOV_CTRL_GetHVsupplyOutputCurrent(std::uint32_t, std::uint8_t* valid,
                                                   double* current)
{
    bench::take_answer_time();
    *valid = 1;
    *current = value_near(1e-6);
    return 0;
}
