/// Recordings of the utility, row by row: those of the heat-controller, and those of the voltage
/// tuning display.
#pragma once

#include "companion/log/lines.h"
#include "companion/log/wall_clock.h"
#include "frame/files/measurement_log.h"

#include <array>
#include <optional>
#include <span>

namespace companion
{

struct Cell {
    std::string_view text; ///< empty = nothing was measured
    double value = 0.0;    ///< may be nan or inf
};

/// What was measured at once. Good until the next row.
struct Row {
    std::string_view time; ///< seconds since the begin, as it is written
    std::int64_t time_ms = 0;
    std::span<const Cell> cells; ///< one for each column
};

/// What stands behind the rows, and what was found wrong on the way there.
struct LogEnd {
    bool has_trailer = false; ///< a whole one; without it the program was killed, or still records
    double duration_s = 0.0;  ///< the trailer's
    std::vector<std::uint32_t> counts = {}; ///< the trailer's, as the format tells them
    std::int64_t torn_line = 0;             ///< one without its end; 0 = none
    std::int64_t damaged_line = 0;          ///< the first one that makes no sense; 0 = none
    std::int64_t damaged_lines = 0;         ///< all such
};

/// Reads a recording. The file may grow meanwhile.
class LogReader
{
public:
    /// Reads the heading. False, with a message that names the line, when it is none.
    [[nodiscard]] bool open(const std::string& name, const Surroundings& outside);

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] const MeasurementFormat& format() const { return *format_; }
    /// Whose measurements they are, in UTF-8.
    [[nodiscard]] const std::string& module() const { return module_; }
    [[nodiscard]] WallClock& clock() { return clock_; }

    /// The next row; rows that make no sense are passed over. False behind the last one.
    [[nodiscard]] bool next(Row& row);

    /// Good when there are no more rows.
    [[nodiscard]] const LogEnd& end() const { return end_; }
    /// Tells what was left out. False when the file is damaged or could not be read to its end; a
    /// torn last line is none of it.
    [[nodiscard]] bool tell_flaws() const;

    /// Goes back to the first row.
    void rewind();

private:
    [[nodiscard]] bool read_heading();
    [[nodiscard]] bool refuse(const char* why) const;
    [[nodiscard]] bool heading_line(std::string_view& line);
    [[nodiscard]] bool read_row(std::string_view line, Row& row);
    struct TrailerTimes {
        bool has_duration = false, has_rate = false, has_response = false;
    };
    void read_trailer();
    /// False when it makes no sense.
    [[nodiscard]] bool read_trailer_line(std::string_view line, TrailerTimes& times);
    void note_damage();

    static constexpr std::size_t most_columns = 16;

    std::string name_;
    const Surroundings* outside_ = nullptr;
    LineSource lines_;
    const MeasurementFormat* format_ = nullptr;
    std::string module_;
    WallClock clock_;
    std::array<Cell, 1 + most_columns> cells_; ///< the time first
    LogEnd end_;
};

/// "3V3": texts of a column in UTF-8.
[[nodiscard]] std::string quantity_name(const RecordedColumn& column);
/// "V"
[[nodiscard]] std::string quantity_unit(const RecordedColumn& column);

} // namespace companion
