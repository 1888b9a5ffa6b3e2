/// Waiting, and taking series of measurements, for the acceptance test.
#pragma once

#include "frame/failure.h"
#include "frame/terminal/console.h"
#include "protocol/report/report.h"
#include "protocol/report/series.h"
#include "protocol/report/statistics.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Everything that returns bool here has told the user, and the report, why it is false.

/// "Stopped by user!": the answer to SPACE.
void report_stop(Report& report);

/// False when the report cannot be written any more, or the program is asked to end. To be asked
/// between two steps.
[[nodiscard]] bool may_go_on(Report& report);

enum class SpaceKey : std::uint8_t { ignored, stops };

/// Waits, and counts down on a terminal; false when SPACE ended the wait where it may, or the
/// program is asked to end. What was typed before is no answer to a wait that SPACE ends.
[[nodiscard]] bool wait(Report& report, std::int64_t milliseconds, SpaceKey space);

/// A line that is rewritten in place while something goes on; on a terminal one below it tells how
/// long the test will still take.
class RunningLine
{
public:
    RunningLine(const Report& report, const char* label);
    ~RunningLine() { scope_.end_quietly(false); } // the cursor stays hidden: the test goes on
    RunningLine(const RunningLine&) = delete;
    RunningLine& operator=(const RunningLine&) = delete;
    /// With SpaceKey::stops it says what SPACE does.
    void show(const std::string& text, SpaceKey space = SpaceKey::ignored);
    /// Takes everything away; the cursor stays at the begin of the line. It is the last thing to do
    /// with it.
    void clear();

    /// Leaves the line as it is and goes to the next. It is the last thing to do with it.
    void leave();

private:
    void show_outlook(const std::string& text);

    const Report& report_;
    DisplayScope scope_;
    Place place_;
};

/// "#03/20", the number of a sample and how many there will be.
[[nodiscard]] std::string counter_text(std::size_t number, std::size_t count);

/// One measured quantity.
struct SampleChannel {
    const char* label; ///< may be empty where the quantity stands alone
    const QuantityFormat* quantity;
    bool as_range = false; ///< in the file its range is told, not its deviations
    Statistics statistics = {};
};

/// What a call brought.
struct Sample {
    Failure failed; ///< the function
    bool is_valid = true;
};

/// Where samples come from, and what came so far.
struct SampleSource {
    const char* what; ///< "output voltage"; named when it does not come
    std::vector<SampleChannel> channels;
    std::size_t count;
    std::optional<int> ready_bit; ///< announces a new sample; none = one sample a second
    /// Fetches a sample, a value for each channel.
    std::function<Sample(std::span<double> values)> fetch;
    std::int64_t second_ms = 0, last_ms = 0; ///< when these samples came

    [[nodiscard]] std::size_t samples() const { return channels.front().statistics.count(); }
    [[nodiscard]] bool is_complete() const { return samples() >= count; }
    /// Mean time between the samples, 0 before the third: the first one may have been there for a
    /// while when it was fetched.
    [[nodiscard]] double period_ms() const;
};

/// Gives a source its channels and the way to its samples: `read` fills a Record and returns what
/// the call brought. `channels` must outlive the source.
template <class Record, class Read>
void sample_records(SampleSource& source, std::span<const SeriesChannel<Record>> channels,
                    Read read)
{
    for (const SeriesChannel<Record>& channel : channels)
        source.channels.push_back({channel.label, channel.quantity});
    source.fetch = [channels, read](std::span<double> values) {
        Record record;
        const Sample sample = read(record);
        for (std::size_t i = 0; i < channels.size(); ++i)
            values[i] = record.*channels[i].value;
        return sample;
    };
}

/// Whose data-ready bits are looked at: a module's or, without an address, the controller's.
using ReadyAddress = std::optional<unsigned>;

/// Collects from sources that become ready each in its own time, until all are complete. The
/// console shows how far they are.
[[nodiscard]] bool collect(Report& report, const char* title, ReadyAddress address,
                           std::span<SampleSource> sources);

/// Reports what was collected from a source: the means in a line on the console; in the file a line
/// for each channel. `leading` stands before them.
void report_series(Report& report, const char* title, const SampleSource& source,
                   std::vector<ReportItem> leading = {});

/// Both, for a source alone.
[[nodiscard]] bool take_series(Report& report, const char* title, ReadyAddress address,
                               SampleSource source);
