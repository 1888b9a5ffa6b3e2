#include "companion/report/pictures.h"

#include "companion/report/output_points.h"
#include "companion/text.h"
#include "frame/text/format.h"
#include "protocol/report/series.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace companion
{

namespace
{

struct Point {
    double x, y;
};

/// A range of numbers that grows with what is put in.
struct Extent {
    double low = INFINITY, high = -INFINITY;

    void take(double value)
    {
        if (!std::isfinite(value))
            return;
        low = std::min(low, value);
        high = std::max(high, value);
    }
    [[nodiscard]] bool is_empty() const { return !(low <= high); }
    /// A little wider than what it holds, and never without width.
    void widen(double part)
    {
        const double more =
            high > low ? (high - low) * part : std::max(std::abs(high) * part, 1e-12);
        low -= more;
        high += more;
    }
};

/// The distance of marks on an axis: 1, 2 or 5 times a power of ten.
double mark_distance(const Extent& extent)
{
    constexpr double marks = 5;
    const double rough = (extent.high - extent.low) / marks;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= rough)
            return factor * power;
    }
    return 10 * power;
}

/// A diagram with two axes.
class Diagram
{
public:
    Diagram(const char* title, const char* x_name, const char* y_name, Extent x, Extent y)
        : x_{x}, y_{y}
    {
        svg_ =
            formatted("<svg class=\"diagram\" viewBox=\"0 0 %g %g\" role=\"img\"><title>%s</title>"
                      "<text class=\"name\" x=\"%g\" y=\"14\">%s</text>",
                      width, height, title, left, title);
        draw_axes(x_name, y_name);
    }

    void draw_band(const std::vector<Point>& upper, const std::vector<Point>& lower)
    {
        std::string points;
        for (const Point& point : upper)
            points += at(point);
        for (auto point = lower.rbegin(); point != lower.rend(); ++point)
            points += at(*point);
        svg_ += "<polygon class=\"band\" points=\"" + points + "\"/>";
    }

    void draw_line(const std::vector<Point>& line)
    {
        std::string points;
        for (const Point& point : line)
            points += at(point);
        svg_ += "<polyline class=\"line\" points=\"" + points + "\"/>";
    }

    void draw_point(Point point, bool is_bad)
    {
        svg_ += formatted("<circle class=\"%s\" cx=\"%.1f\" cy=\"%.1f\" r=\"3.5\"/>",
                          is_bad ? "point bad" : "point", px(point.x), py(point.y));
    }

    [[nodiscard]] std::string svg() const { return svg_ + "</svg>\n"; }

private:
    static constexpr double width = 640, height = 260;
    static constexpr double left = 76, right = 16, top = 26, bottom = 40;

    [[nodiscard]] double px(double x) const
    {
        return left + (x - x_.low) / (x_.high - x_.low) * (width - left - right);
    }
    [[nodiscard]] double py(double y) const
    {
        return height - bottom - (y - y_.low) / (y_.high - y_.low) * (height - top - bottom);
    }
    [[nodiscard]] std::string at(Point point) const
    {
        return formatted("%.1f,%.1f ", px(point.x), py(point.y));
    }

    /// Where an axis has its marks.
    [[nodiscard]] static std::vector<double> marks(const Extent& extent)
    {
        const double step = mark_distance(extent);
        const double first = std::ceil(extent.low / step), last = extent.high / step;
        std::vector<double> marks;
        for (int i = 0; first + i <= last; ++i)
            marks.push_back((first + i) * step + 0.0); // no "-0"
        return marks;
    }

    void draw_axes(const char* x_name, const char* y_name)
    {
        for (const double x : marks(x_))
            svg_ += formatted("<line class=\"grid\" x1=\"%.1f\" x2=\"%.1f\" y1=\"%g\" y2=\"%g\"/>"
                              "<text class=\"mark\" x=\"%.1f\" y=\"%g\">%g</text>",
                              px(x), px(x), top, height - bottom, px(x), height - bottom + 14, x);
        for (const double y : marks(y_))
            svg_ += formatted("<line class=\"grid\" x1=\"%g\" x2=\"%g\" y1=\"%.1f\" y2=\"%.1f\"/>"
                              "<text class=\"mark end\" x=\"%g\" y=\"%.1f\">%g</text>",
                              left, width - right, py(y), py(y), left - 6, py(y) + 4, y);
        svg_ += formatted("<text class=\"mark\" x=\"%g\" y=\"%g\">%s</text>"
                          "<text class=\"mark end\" x=\"%g\" y=\"14\">%s</text>",
                          (left + width - right) / 2, height - 8, x_name, width - right, y_name);
    }

    Extent x_, y_;
    std::string svg_;
};

/// The judgement of a key; null when there is none.
const Judgement* find(const Judged& judged, std::string_view key)
{
    const auto found =
        std::find_if(judged.judgements.begin(), judged.judgements.end(),
                     [key](const Judgement& judgement) { return judgement.fact->key == key; });
    return found != judged.judgements.end() ? &*found : nullptr;
}

double value_of(const Judged& judged, const std::string& key)
{
    return judged.report->value_of(key);
}

/// Whether what was found at a target is good.
bool is_broken(const Judged& judged, const Fact* fact)
{
    const Judgement* judgement = fact != nullptr ? find(judged, fact->key) : nullptr;
    return judgement != nullptr && judgement->outcome == Outcome::broken;
}

} // namespace

std::string output_error_picture(const Judged& judged, const std::string& unit)
{
    const std::vector<OutputPoint> points = output_points(*judged.report, unit);
    if (points.empty())
        return {};
    Extent x, y;
    const auto band_of = [&](const OutputPoint& point) {
        const Judgement* judgement = find(judged, point.error->key);
        return judgement != nullptr ? judgement->band : std::optional<Band>{};
    };
    for (const OutputPoint& point : points) {
        x.take(point.target);
        y.take(*point.error->value);
        if (const auto band = band_of(point)) {
            y.take(band->low);
            y.take(band->high);
        }
    }
    x.widen(0.05);
    y.widen(0.1);
    Diagram diagram{"Error of the output voltage", "target in V", "error in V", x, y};
    for (const bool negative : {true, false}) {
        std::vector<Point> upper, lower;
        for (const OutputPoint& point : points) {
            const auto band = band_of(point);
            if (band && (point.target < 0) == negative) {
                upper.push_back({point.target, std::min(band->high, y.high)});
                lower.push_back({point.target, std::max(band->low, y.low)});
            }
        }
        diagram.draw_band(upper, lower);
    }
    for (const OutputPoint& point : points)
        diagram.draw_point({point.target, *point.error->value}, is_broken(judged, point.error));
    return diagram.svg();
}

std::string output_current_picture(const Judged& judged, const std::string& unit)
{
    const std::vector<OutputPoint> points = output_points(*judged.report, unit);
    if (points.empty())
        return {};
    Extent x, y;
    std::vector<Point> line;
    for (const OutputPoint& point : points) {
        x.take(point.volts);
        y.take(point.nanoamperes);
        line.push_back({point.volts, point.nanoamperes});
    }
    x.widen(0.05);
    y.widen(0.1);
    Diagram diagram{"Output current", "measured voltage in V", "current in nA", x, y};
    diagram.draw_line(line);
    for (const OutputPoint& point : points)
        diagram.draw_point({point.volts, point.nanoamperes},
                           is_broken(judged, point.current_error));
    return diagram.svg();
}

std::string heater_picture(const Judged& judged)
{
    constexpr double group = 150, left = 30, base = 190, tallest = 150, bar = 30;
    struct Measured {
        const char *key, *limit, *unit;
    };
    constexpr Measured quantities[] = {
        {"heater-voltage", "voltage", "V"}, {"current", "current", "A"}, {"power", "power", "W"}};
    std::string bars;
    double x = left;
    for (const char* run : heater_runs) {
        const std::string key = std::string{"slot0/heater/"} + run + '/';
        bars +=
            formatted("<text class=\"mark\" x=\"%g\" y=\"%g\">%s</text>", x + 50, base + 34, run);
        double bar_x = x;
        for (const Measured& quantity : quantities) {
            const double value = value_of(judged, key + quantity.key);
            const double most = value_of(judged, std::string{"slot0/limits/"} + quantity.limit);
            if (!std::isfinite(value) || !(most > 0))
                return {};
            const double tall = std::clamp(value / most, 0.0, 1.0) * tallest;
            bars += formatted(
                "<rect class=\"bar %s\" x=\"%g\" y=\"%.1f\" width=\"%g\" height=\"%.1f\"/>"
                "<text class=\"mark\" x=\"%g\" y=\"%.1f\">%.3g %s</text>",
                quantity.limit, bar_x, base - tall, bar - 4, tall, bar_x + bar / 2 - 2,
                base - tall - 4, value, quantity.unit);
            bar_x += bar + 8;
        }
        if (const Judgement* heat = find(judged, key + "heater-temperature");
            heat != nullptr && heat->fact->spread)
            bars += formatted("<text class=\"mark\" x=\"%g\" y=\"%g\">%.1f to %.1f \xC2\xB0"
                              "C</text>",
                              x + 50, base + 18, *heat->fact->value - heat->fact->spread->below,
                              *heat->fact->value + heat->fact->spread->above);
        x += group;
    }
    return formatted("<svg class=\"diagram\" viewBox=\"0 0 640 240\" role=\"img\"><title>Heater "
                     "runs</title><text class=\"name\" x=\"%g\" y=\"14\">Heater runs: voltage, "
                     "current and power, of what the hardware allows</text>"
                     "<line class=\"grid\" x1=\"%g\" x2=\"620\" y1=\"%g\" y2=\"%g\"/>",
                     left, left, base - tallest, base - tallest) +
           bars + "</svg>\n";
}

std::string band_picture(const Judgement& judgement)
{
    if (!judgement.band || !judgement.fact->value || !std::isfinite(*judgement.fact->value))
        return {};
    const Band& band = *judgement.band;
    const double value = *judgement.fact->value;
    const Spread spread = judgement.fact->spread.value_or(Spread{});
    // The band takes the middle half; of an open one the end stands there alone.
    const double end = std::isinf(band.low) ? band.high : band.low;
    const double open_size = std::max(std::abs(end), 1e-12);
    const double low = std::isinf(band.low) ? band.high - open_size : band.low;
    const double high = std::isinf(band.high) ? band.low + open_size : band.high;
    const auto px = [&](double position) {
        const double size = high > low ? high - low : 1.0;
        return 30 + std::clamp((position - low) / size, -0.45, 1.45) * 60;
    };
    return formatted(
        "<svg class=\"where\" viewBox=\"0 0 120 12\" aria-hidden=\"true\">"
        "<rect class=\"track\" x=\"0\" y=\"4\" width=\"120\" height=\"4\"/>"
        "<rect class=\"good\" x=\"%d\" y=\"4\" width=\"%d\" height=\"4\"/>"
        "<line class=\"reach\" x1=\"%.1f\" x2=\"%.1f\" y1=\"6\" y2=\"6\"/>"
        "<rect class=\"value %s\" x=\"%.1f\" y=\"1\" width=\"4\" height=\"10\"/></svg>",
        std::isinf(band.low) ? 0 : 30, std::isinf(band.low) || std::isinf(band.high) ? 90 : 60,
        px(value - spread.below), px(value + spread.above),
        judgement.outcome == Outcome::broken ? "bad" : "", px(value) - 2);
}

std::string trend_picture(const std::vector<double>& values, const std::optional<Band>& band)
{
    constexpr double width = 160, height = 28;
    Extent y;
    for (const double value : values)
        y.take(value);
    if (y.is_empty())
        return {};
    y.widen(0.2);
    const auto py = [&](double value) {
        return std::clamp(height - (value - y.low) / (y.high - y.low) * height, 0.0, height);
    };
    std::string svg = formatted("<svg class=\"trend\" viewBox=\"0 0 %g %g\" aria-hidden=\"true\">",
                                width, height);
    if (band)
        svg += formatted(
            "<rect class=\"band\" x=\"0\" y=\"%.1f\" width=\"%g\" height=\"%.1f\"/>",
            py(std::min(band->high, y.high)), width,
            std::max(0.0, py(std::max(band->low, y.low)) - py(std::min(band->high, y.high))));
    svg += "<polyline class=\"line\" points=\"";
    const double step =
        values.size() > 1 ? (width - 4) / static_cast<double>(values.size() - 1) : 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isfinite(values[i]))
            svg += formatted("%.1f,%.1f ", 2 + step * static_cast<double>(i), py(values[i]));
    }
    return svg + "\"/></svg>";
}

} // namespace companion
