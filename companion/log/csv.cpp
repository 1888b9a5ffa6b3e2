#include "companion/log/commands.h"
#include "companion/log/reader.h"

namespace companion
{

namespace
{

/// The columns' names; none of ours needs quotes.
std::string heading_of(const MeasurementFormat& format)
{
    std::string heading = std::string{"Time,"} + log_text::time;
    for (const RecordedColumn& column : format.columns)
        heading += ',' + quantity_name(column) + '/' + quantity_unit(column);
    return heading + '\n';
}

} // namespace

int write_table(const std::string& file, const std::string& out, const Surroundings& outside)
{
    LogReader reader;
    TextFile table;
    if (!reader.open(file, outside) || !may_be_written(out, {file}, outside) ||
        !table.open(out.empty() ? "-" : out, outside))
        return wrong_usage;
    constexpr std::size_t piece = 1 << 16;
    std::string text = heading_of(reader.format());
    Row row;
    while (reader.next(row)) {
        text += reader.clock().text_after(row.time_ms);
        text += ',';
        text += row.time;
        for (const Cell& cell : row.cells) {
            text += ',';
            text += cell.text;
        }
        text += '\n';
        if (text.size() > piece) {
            table.write(text);
            text.clear();
        }
    }
    table.write(text);
    const bool is_written = table.close();
    const bool is_sound = reader.tell_flaws();
    return !is_written ? wrong_usage : is_sound ? 0 : not_whole;
}

} // namespace companion
