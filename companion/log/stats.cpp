#include "companion/log/commands.h"
#include "companion/log/numbers.h"
#include "companion/log/statistics.h"
#include "companion/text.h"
#include "frame/platform/platform.h"
#include "frame/text/format.h"

#include <algorithm>
#include <cmath>

namespace companion
{

namespace
{

/// "0:01:02.345"
std::string duration_text(std::int64_t milliseconds)
{
    const std::int64_t seconds = milliseconds / 1000;
    return formatted("%lld:%02d:%02d.%03d", static_cast<long long>(seconds / 3600),
                     static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                     static_cast<int>(milliseconds % 1000));
}

std::string gaps_text(const Intervals& intervals)
{
    const std::uint64_t gaps = intervals.gaps();
    if (gaps == 0)
        return "0";
    return std::to_string(gaps) + " (" +
           number_text(static_cast<double>(intervals.longest_ms()) / 1000) + " s)";
}

/// Cells of one quantity; the first one is on the left, the others are on the right.
std::vector<std::string> cells_of(const RecordedColumn& column, const Statistics& statistics)
{
    std::vector<std::string> cells = {quantity_name(column) + '/' + quantity_unit(column),
                                      std::to_string(statistics.count())};
    if (statistics.count() == 0) {
        cells.resize(8, "-");
        return cells;
    }
    constexpr int digits_of_value = 7, digits_of_difference = 3;
    const auto shown = [](double value, int digits, bool sign = false) {
        return std::isfinite(value) ? significant(value, digits, sign) : "-";
    };
    cells.insert(cells.end(),
                 {shown(statistics.mean(), digits_of_value),
                  shown(statistics.deviation(), digits_of_difference),
                  shown(statistics.smallest(), digits_of_value),
                  shown(statistics.largest(), digits_of_value),
                  shown(statistics.drift_per_hour().value_or(NAN), digits_of_difference, true),
                  gaps_text(statistics.intervals())});
    return cells;
}

void show_table(Printer& printer, const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], printer.columns_of(row[i]));
    }
    for (const auto& row : rows) {
        const Color color = &row == &rows.front() ? Color::label : Color::value;
        printer.print("  " + row.front() +
                      std::string(widths[0] - printer.columns_of(row.front()), ' '));
        for (std::size_t i = 1; i < row.size(); ++i) {
            printer.print(std::string(2 + widths[i] - printer.columns_of(row[i]), ' '));
            printer.print(color, row[i]);
        }
        printer.print("\n");
    }
}

void show_end(Printer& printer, const LogReader& reader)
{
    const LogEnd& end = reader.end();
    if (!end.has_trailer)
        printer.print(Color::warning, "  no trailer: the program that recorded was killed, or it "
                                      "still records\n");
    for (std::size_t i = 0; i < end.counts.size(); ++i) {
        const RecordedCount& what = reader.format().counts[i];
        if (!what.is_error || end.counts[i] == 0)
            continue;
        printer.print(std::string{"  "} + what.label + ": ");
        printer.print(Color::bad, std::to_string(end.counts[i]) + '\n');
    }
}

bool tells_errors(const LogReader& reader)
{
    const LogEnd& end = reader.end();
    for (std::size_t i = 0; i < end.counts.size(); ++i) {
        if (reader.format().counts[i].is_error && end.counts[i] > 0)
            return true;
    }
    return false;
}

int show_log(const std::string& name, Printer& printer, const Surroundings& outside)
{
    LogReader reader;
    if (!reader.open(name, outside))
        return wrong_usage;
    const LogStatistics all = read_statistics(reader);
    const LogEnd& end = reader.end();
    printer.print(valid_utf8(name) + ": " + reader.format().what + ' ' + reader.module() + '\n');
    const std::int64_t duration =
        end.has_trailer ? std::llround(end.duration_s * 1000) : all.last_ms;
    printer.print("  " + reader.clock().text_after(0) + ", " +
                  duration_text(std::max<std::int64_t>(duration, 0)) + ", " +
                  std::to_string(all.rows) + (all.rows == 1 ? " row\n" : " rows\n"));
    std::vector<std::vector<std::string>> rows = {
        {"", "count", "mean", "spread", "smallest", "largest", "drift/h", "gaps"}};
    for (std::size_t i = 0; i < all.quantities.size(); ++i)
        rows.push_back(cells_of(reader.format().columns[i], all.quantities[i]));
    show_table(printer, rows);
    for (std::size_t i = 0; i < all.quantities.size(); ++i) {
        const std::uint64_t strange = all.quantities[i].not_finite();
        if (strange > 0)
            printer.print("  " + quantity_name(reader.format().columns[i]) +
                          " was no finite number: " + std::to_string(strange) + '\n');
    }
    show_end(printer, reader);
    (void)printer.flush(); // what comes on standard error comes behind it
    const bool is_sound = reader.tell_flaws();
    return !is_sound || !end.has_trailer ? not_whole : tells_errors(reader) ? 1 : 0;
}

} // namespace

int show_statistics(const std::vector<std::string>& files, const Surroundings& outside)
{
    Printer printer{outside};
    int worst = 0;
    for (const std::string& file : files) {
        worst = std::max(worst, show_log(file, printer, outside));
        if (platform::stop_signal() != 0)
            break;
    }
    return printer.flush() ? worst : wrong_usage;
}

} // namespace companion
