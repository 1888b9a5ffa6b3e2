/// A picture of measurements, before it takes one of its forms.
#pragma once

#include "companion/log/thinning.h"
#include "companion/output.h"

#include <array>
#include <string>
#include <vector>

namespace companion
{

/// A quantity of one file. Texts are UTF-8.
struct Curve {
    std::size_t file = 0; ///< index
    std::string name;     ///< "Vout"
    std::string unit;     ///< "V"
    std::vector<Point> points;
};

/// Curves over a common axis.
struct Picture {
    std::string x_name;           ///< "time since the start"
    std::string x_unit;           ///< "s"
    bool is_over_time = true;     ///< x counts seconds, to the millisecond
    double low = 0.0, high = 1.0; ///< of x
    std::vector<Curve> curves;
};

/// What is drawn of some files.
struct Drawing {
    struct Source {
        std::string file;  ///< its name
        std::string about; ///< whose measurements, since when
        std::string start; ///< "2026-03-14T09:26:53.000+01:00"; empty = none
    };
    std::vector<Source> sources;
    std::vector<Picture> pictures;
    bool is_thinned = false;

    /// The curve's name with its file's where there are several.
    [[nodiscard]] std::string label_of(const Curve& curve) const;
};

/// Curves of one unit, which share a panel.
struct Panel {
    std::string unit;
    std::vector<const Curve*> curves;
};
[[nodiscard]] std::vector<Panel> panels_of(const Picture& picture);

/// How the curves of a panel are told apart on paper; behind the last one they begin again.
inline constexpr std::array curve_colors = {"#1f5fa8", "#b3261e", "#187a3a", "#8a5a00",
                                            "#7b3fa0", "#00757d", "#b0307a", "#5a6370"};

/// The smallest and the largest of a number of points; without width it is widened.
struct Range {
    double low, high;
};
[[nodiscard]] Range range_of(const std::vector<const Curve*>& curves);

/// Draws on a terminal of so many columns: dots of braille, or of ASCII where that is all there is.
void show_drawing(Printer& printer, const Drawing& drawing, int columns, bool has_utf8);

/// Writes a page that needs nothing beside it.
void write_drawing_page(TextFile& file, const Drawing& drawing);

enum class ImageForm { svg, png };
/// Has gnuplot draw an image. False, with a message, when that does not work.
[[nodiscard]] bool draw_image(const Drawing& drawing, ImageForm form, const Surroundings& outside,
                              std::string& image);

} // namespace companion
