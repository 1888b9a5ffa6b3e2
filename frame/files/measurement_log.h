/// The tab-separated file into which a display writes what it measures, while it measures:
///
///     <what>:<tab><whose>
///     Data acquisition started on:<tab>Sat, 03/14/2026, 09:26:53
///
///     Time/s<tab>...                                     the columns
///     0.013<tab>...                                      the rows
///
///     Data acquisition stopped
///     Total duration in s:<tab>12.345                    and so on
#pragma once

#include "frame/files/data_file.h"
#include "frame/platform/platform.h"
#include "frame/text/printf_format.h"

#include <cstdint>
#include <span>
#include <string>

/// "Vheat/V" in the line of the columns; texts of ISO 8859-1.
struct RecordedColumn {
    const char* name;
    const char* unit;
};

/// A line behind the trailer that counts something.
struct RecordedCount {
    const char* label;
    bool is_error; ///< what it counts should not have been
};

/// What the files of one display have in common.
struct MeasurementFormat {
    const char* what;                        ///< "Operating parameters of"
    std::span<const RecordedColumn> columns; ///< behind the time
    std::span<const RecordedCount> counts;   ///< each with a ':' behind its label
};

/// The texts of every file, but for the ':' behind those that have a value.
namespace log_text
{
inline constexpr const char* started = "Data acquisition started on";
inline constexpr const char* time = "Time/s";
inline constexpr const char* stopped = "Data acquisition stopped";
inline constexpr const char* duration = "Total duration in s";
inline constexpr const char* polling_rate = "Mean polling rate in cycles/s";
inline constexpr const char* response_time = "Mean response time in ms";
} // namespace log_text

/// "%a, %m/%d/%Y, %H:%M:%S" with English day names.
[[nodiscard]] std::string acquisition_time_text(const platform::LocalTime& time);

/// What the user is told when the file of a display does not work; no line end.
namespace log_error
{
inline constexpr const char* opening = "Error opening data file";
inline constexpr const char* writing = "Error writing data file";
inline constexpr const char* closing = "Error closing data file";
} // namespace log_error

/// Every member that returns bool tells whether all that was written so far could be written; what
/// still waits in the buffer is found out by start(), keep(), store() and close() at the latest.
class MeasurementLog
{
public:
    /// Creates the file, or empties the one of that name.
    [[nodiscard]] bool create(const char* name) { return file_.create(name); }
    [[nodiscard]] bool is_open() const { return file_.is_open(); }

    /// Writes and stores the heading: `whose` module is measured since `started`.
    [[nodiscard]] bool start(const MeasurementFormat& format, const std::string& whose,
                             const platform::LocalTime& started);

    /// The rows' times and the duration count from this tick on.
    void start_clock(std::int64_t now_ms) { start_ms_ = now_ms; }

    /// Writes the time and what the format makes of the values: a tab before each column, and the
    /// line's end.
    [[nodiscard]] bool row(std::int64_t now_ms, const char* format, ...) PRINTF_FORMAT(3, 4);

    /// To be called in each cycle: stores what was written, about once a second.
    [[nodiscard]] bool keep(std::int64_t now_ms) { return file_.store_when_due(now_ms); }

    /// Writes the trailer: duration, cycles per second and ms per cycle (0 where it would be
    /// divided by 0).
    [[nodiscard]] bool stop(std::int64_t now_ms, std::uint64_t cycles);

    /// A line of its own behind the trailer.
    [[nodiscard]] bool print(const char* format, ...) PRINTF_FORMAT(2, 3);

    /// Everything that was written is on the disk now.
    [[nodiscard]] bool store() { return file_.store(); }

    /// Stores what is left, too. The file is closed anyway.
    [[nodiscard]] bool close() { return file_.complete(); }

private:
    OutputFile file_;
    std::int64_t start_ms_ = 0;
};
