#include "companion/log/numbers.h"
#include "companion/log/picture.h"
#include "frame/terminal/characters.h"
#include "frame/text/format.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace companion
{

namespace
{

constexpr int rows = 6;
constexpr int label_columns = 10;
constexpr int fewest_columns = 10, most_columns = 1000; ///< of the dots

/// Dots in character cells: two by four of braille, one by two of ASCII.
class Canvas
{
public:
    Canvas(int columns, bool has_utf8)
        : has_utf8_{has_utf8},
          columns_{columns},
          wide_{has_utf8 ? 2 : 1},
          tall_{has_utf8 ? 4 : 2},
          cells_(static_cast<std::size_t>(columns) * rows)
    {
    }

    [[nodiscard]] int width() const { return columns_ * wide_; }
    [[nodiscard]] int height() const { return rows * tall_; }

    /// A dot; (0, 0) is the lower left one.
    void set(int x, int y)
    {
        const int from_top = height() - 1 - y;
        unsigned char& cell = cells_[index(from_top / tall_, x / wide_)];
        cell = static_cast<unsigned char>(cell | bit(x % wide_, from_top % tall_));
    }

    void draw_line(int x, int y, int to_x, int to_y)
    {
        const int across = std::abs(to_x - x), up = -std::abs(to_y - y);
        const int step_x = x < to_x ? 1 : -1, step_y = y < to_y ? 1 : -1;
        for (int error = across + up;;) {
            set(x, y);
            if (x == to_x && y == to_y)
                return;
            const int doubled = 2 * error;
            if (doubled >= up) {
                error += up;
                x += step_x;
            }
            if (doubled <= across) {
                error += across;
                y += step_y;
            }
        }
    }

    [[nodiscard]] std::string row_text(int row) const
    {
        std::string text;
        for (int column = 0; column < columns_; ++column) {
            const unsigned char dots = cells_[index(row, column)];
            if (dots == 0)
                text += ' ';
            else if (has_utf8_)
                append_utf8(text, U'\u2800' + dots);
            else
                text += " '.:"[dots & 3];
        }
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }

private:
    [[nodiscard]] std::size_t index(int row, int column) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
               static_cast<std::size_t>(column);
    }

    /// Of U+2800 and those behind it; in ASCII the upper dot is 1, the lower one 2.
    [[nodiscard]] unsigned bit(int x, int from_top) const
    {
        constexpr std::array<std::array<unsigned char, 4>, 2> braille = {
            {{0x01, 0x02, 0x04, 0x40}, {0x08, 0x10, 0x20, 0x80}}};
        return braille[static_cast<std::size_t>(x)][static_cast<std::size_t>(from_top)];
    }

    bool has_utf8_;
    int columns_, wide_, tall_;
    std::vector<unsigned char> cells_;
};

int dot(double value, Range range, int dots)
{
    // Halves: the width of the range may be more than the largest number.
    const double part = (value / 2 - range.low / 2) / (range.high / 2 - range.low / 2);
    return static_cast<int>(std::fmin(std::fmax(part * dots, 0), dots - 1));
}

void draw(Canvas& canvas, const Curve& curve, Range x_range, Range y_range)
{
    const Point* before = nullptr;
    for (const Point& point : curve.points) {
        if (std::isnan(point.y)) {
            before = nullptr;
            continue;
        }
        const Point& from = before != nullptr ? *before : point;
        canvas.draw_line(
            dot(from.x, x_range, canvas.width()), dot(from.y, y_range, canvas.height()),
            dot(point.x, x_range, canvas.width()), dot(point.y, y_range, canvas.height()));
        before = &point;
    }
}

/// With so many digits, or as many as there is room for.
std::string end_label(double value, int digits)
{
    std::string text = significant(value, digits);
    while (text.size() > static_cast<std::size_t>(label_columns) && digits > 1)
        text = significant(value, --digits);
    return text;
}

/// Both ends of an axis, with as many digits as tell them apart, and without an exponent where that
/// is possible.
std::array<std::string, 2> end_labels(Range range)
{
    const double size = std::max(std::abs(range.low), std::abs(range.high));
    const double apart = std::log10(size / 2 / (range.high / 2 - range.low / 2)) + 4;
    const double whole = size < 1e9 ? std::log10(size) + 2 : 0.0; // one more: 9999.9 is no 1e4
    const int digits = static_cast<int>(std::fmin(std::fmax(std::fmax(apart, whole), 4), 15));
    return {end_label(range.low, digits), end_label(range.high, digits)};
}

std::string on_the_right(const std::string& text, int columns)
{
    const auto width = static_cast<std::size_t>(columns);
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

void show_curve(Printer& printer, const Drawing& drawing, const Picture& picture,
                const Curve& curve, int columns, bool has_utf8)
{
    std::vector<const Curve*> same; // in all files, so that they can be compared
    for (const Curve& other : picture.curves) {
        if (other.name == curve.name && other.unit == curve.unit)
            same.push_back(&other);
    }
    const Range y_range = range_of(same);
    Canvas canvas{columns, has_utf8};
    draw(canvas, curve, {picture.low, picture.high}, y_range);
    const auto labels = end_labels(y_range);
    printer.print(std::string(label_columns + 1, ' '));
    printer.print(Color::value, drawing.label_of(curve) + " in " + curve.unit + '\n');
    for (int row = 0; row < rows; ++row) {
        const std::string label = row == 0 ? labels[1] : row == rows - 1 ? labels[0] : "";
        printer.print(on_the_right(label, label_columns) + (has_utf8 ? "\u2502" : "|") +
                      canvas.row_text(row) + '\n');
    }
}

void show_x_axis(Printer& printer, const Picture& picture, int columns, bool has_utf8)
{
    const std::string beside(label_columns, ' ');
    std::string line = beside + (has_utf8 ? "\u2514" : "+");
    for (int i = 0; i < columns; ++i)
        line += has_utf8 ? "\u2500" : "-";
    const auto ends = end_labels({picture.low, picture.high});
    const std::string name = picture.x_name + " in " + picture.x_unit;
    const int left = columns - static_cast<int>(ends[0].size() + name.size());
    const int before = std::max((left - static_cast<int>(ends[1].size())) / 2, 1);
    printer.print(line + '\n' + beside + ' ' + ends[0] +
                  std::string(static_cast<std::size_t>(before), ' ') + name + ' ' +
                  on_the_right(ends[1], std::max(left - before - 1, 0)) + '\n');
}

} // namespace

void show_drawing(Printer& printer, const Drawing& drawing, int columns, bool has_utf8)
{
    const int wide = std::clamp(columns - label_columns - 2, fewest_columns, most_columns);
    for (const Drawing::Source& source : drawing.sources)
        printer.print(source.file + ": " + source.about + '\n');
    for (const Picture& picture : drawing.pictures) {
        for (const Curve& curve : picture.curves)
            show_curve(printer, drawing, picture, curve, wide, has_utf8);
        show_x_axis(printer, picture, wide, has_utf8);
    }
}

} // namespace companion
