#include "instrument/controller_readings.h"

#include "frame/device_call.h"
#include "instrument/words.h"

std::string RunTimes::text() const
{
    return uptime_text(seconds, milliseconds);
}

std::string RunTimes::total_text() const
{
    return uptime_text(total_seconds, total_milliseconds);
}

Failure attempt_uptime(RunTimes& times)
{
    return attempt(LIB(GetUptimeInt), &times.seconds, &times.milliseconds, &times.total_seconds,
                   &times.total_milliseconds);
}

Failure attempt_operation_time(RunTimes& times)
{
    return attempt(LIB(GetOptimeInt), &times.seconds, &times.milliseconds, &times.total_seconds,
                   &times.total_milliseconds);
}

Failure attempt_controller_housekeeping(ControllerHousekeeping& record)
{
    return attempt(LIB(GetHousekeeping), &record.plus_24, &record.plus_5, &record.plus_3_3,
                   &record.cpu, &record.psu);
}

Failure attempt_cpu_data(CpuData& record)
{
    return attempt(LIB(GetCPUdata), &record.load, &record.frequency);
}

Failure attempt_fan_data(FanData& record)
{
    return attempt(LIB(GetFanData), &record.failed, &record.reserved, &record.set_speed,
                   &record.measured_speed, &record.pwm);
}

Failure attempt_led_data(LedData& record)
{
    return attempt(LIB(GetLEDData), &record.red, &record.green, &record.blue);
}

Failure attempt_input_levels(InputLevels& record)
{
    return attempt(LIB(GetInputs), &record.interlock_front, &record.interlock_rear,
                   &record.fan_enabled);
}

Failure attempt_power_monitors(PowerMonitors& record)
{
    return attempt(LIB(GetPowerMonitors), &record.ac_input, &record.dc_output);
}
