/// Fewer points than samples, for a picture that shows no more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace companion
{

struct Point {
    double x;
    double y; ///< nan = a gap: the line ends before it
};

/// Takes the samples of a quantity in the order of time and keeps, of each of so many equal columns
/// of time, the smallest and the largest. Where there are no more samples than that, all are kept.
class Thinning
{
public:
    struct Request {
        std::int64_t first_ms = 0, last_ms = 0; ///< nothing is taken outside
        std::uint64_t samples = 0;              ///< that will come
        std::size_t columns = 1;
        std::optional<std::int64_t> shortest_gap_ms;
    };
    explicit Thinning(const Request& request);

    /// What is no finite number leaves a gap.
    void take(std::int64_t time_ms, double value);

    /// Points with their time in seconds, in its order.
    [[nodiscard]] std::vector<Point> points() const;
    [[nodiscard]] bool is_thinned() const { return !columns_.empty(); }

private:
    struct Sample {
        std::int64_t time_ms = 0;
        double value = 0.0;
        bool is_behind_gap = false;
    };
    struct Column {
        Sample smallest, largest;
        bool is_empty = true, begins_behind_gap = false;
    };

    Request request_;
    std::vector<Column> columns_; ///< empty = all are kept
    std::vector<Sample> samples_;
    std::optional<std::int64_t> previous_ms_;
    bool was_broken_ = false;
};

} // namespace companion
