#include "frame/files/measurement_log.h"

#include "frame/live_display.h"
#include "frame/text/format.h"

#include <array>
#include <cstdarg>
#include <cstddef>

std::string acquisition_time_text(const platform::LocalTime& time)
{
    constexpr std::array<const char*, 7> days = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    return formatted("%s, %02d/%02d/%04d, %02d:%02d:%02d",
                     days[static_cast<std::size_t>(time.weekday)], time.month, time.day, time.year,
                     time.hour, time.minute, time.second);
}

bool MeasurementLog::start(const MeasurementFormat& format, const std::string& whose,
                           const platform::LocalTime& started)
{
    std::string columns = log_text::time;
    for (const auto& [name, unit] : format.columns)
        columns += std::string{'\t'} + name + '/' + unit;
    return file_.print("%s:\t%s\n%s:\t%s\n\n%s\n", format.what, whose.c_str(), log_text::started,
                       acquisition_time_text(started).c_str(), columns.c_str()) &&
           file_.store();
}

bool MeasurementLog::row(std::int64_t now_ms, const char* format, ...)
{
    if (!file_.print("%.3lf", static_cast<double>(now_ms - start_ms_) * 0.001))
        return false;
    va_list arguments;
    va_start(arguments, format);
    const bool printed = file_.print_list(format, arguments);
    va_end(arguments);
    return printed;
}

bool MeasurementLog::stop(std::int64_t now_ms, std::uint64_t cycles)
{
    const CycleRates rates = {.cycles = cycles, .start_ms = start_ms_};
    return file_.print("\n%s\n%s:\t%.3lf\n%s:\t%lf\n%s:\t%lf\n", log_text::stopped,
                       log_text::duration, static_cast<double>(now_ms - start_ms_) * 0.001,
                       log_text::polling_rate, rates.per_second(now_ms), log_text::response_time,
                       rates.mean_ms(now_ms));
}

bool MeasurementLog::print(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool printed = file_.print_list(format, arguments);
    va_end(arguments);
    return printed;
}
