#include "companion/log/picture.h"
#include "companion/text.h"
#include "frame/platform/platform.h"
#include "frame/text/format.h"

#include <algorithm>
#include <cmath>

namespace companion
{

namespace
{

/// Text that gnuplot takes as it stands: within single quotes nothing means anything but the quote.
std::string quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\n')
            quoted += ' ';
        else
            quoted += c == '\'' ? "''" : std::string{c};
    }
    return quoted + '\'';
}

/// A sample between two gaps, of which a line shows nothing.
bool is_alone(const std::vector<Point>& points, std::size_t i)
{
    const auto is_gap = [&](std::size_t at) {
        return at >= points.size() || std::isnan(points[at].y);
    };
    return !is_gap(i) && (i == 0 || is_gap(i - 1)) && is_gap(i + 1);
}

bool has_lone_samples(const Curve& curve)
{
    for (std::size_t i = 0; i < curve.points.size(); ++i) {
        if (is_alone(curve.points, i))
            return true;
    }
    return false;
}

/// Lines "x y"; those of lone samples have the y once more.
std::string data_of(const Curve& curve, std::size_t index)
{
    std::string data = formatted("$curve%zu << END\n", index);
    for (std::size_t i = 0; i < curve.points.size(); ++i) {
        const Point& point = curve.points[i];
        const std::string y = ' ' + number_text(point.y);
        if (!std::isnan(point.y))
            data += number_text(point.x) + y + (is_alone(curve.points, i) ? y : "");
        data += '\n';
    }
    return data + "END\n";
}

/// What draws the curve, in the color of that number.
std::string curve_script(const Drawing& drawing, const Picture& picture, const Curve& curve,
                         std::size_t index, std::size_t color)
{
    const std::string data = formatted("$curve%zu using 1:", index);
    const std::string of_color = formatted(" linetype %zu", color);
    std::string script = data + "2 with " + (picture.is_over_time ? "lines" : "linespoints") +
                         of_color + " title " + quoted(drawing.label_of(curve)) + " noenhanced";
    if (picture.is_over_time && has_lone_samples(curve))
        script += ", " + data + "3 with points" + of_color + " pointtype 7 pointsize 0.4 notitle";
    return script;
}

constexpr int width = 1200, height_of_panel = 260, height_of_line = 20; ///< pixels

/// One panel in its place. Numbers are ours, texts are quoted.
std::string panel_script(const Drawing& drawing, const Picture& picture, const Panel& panel,
                         std::size_t first_curve, bool is_last)
{
    std::string script = "set ylabel " + quoted(panel.unit) + " noenhanced\nset xrange [" +
                         number_text(picture.low) + ':' + number_text(picture.high) + "]\n";
    script += is_last ? "set xlabel " + quoted(picture.x_name + " in " + picture.x_unit) + '\n'
                      : "unset xlabel\n";
    std::string curves;
    for (std::size_t i = 0; i < panel.curves.size(); ++i)
        curves += (i == 0 ? "plot " : ", ") +
                  curve_script(drawing, picture, *panel.curves[i], first_curve + i, i + 1);
    return script + curves + "\nunset label\n";
}

std::string labels_script(const Drawing& drawing, int height)
{
    std::string script;
    for (std::size_t i = 0; i < drawing.sources.size(); ++i) {
        const Drawing::Source& source = drawing.sources[i];
        const double below = static_cast<double>(i + 1) * height_of_line / height;
        script += formatted("set label %zu ", i + 1) + quoted(source.file + ": " + source.about) +
                  " at screen 0.02, screen " + number_text(1.0 - below) + " noenhanced\n";
    }
    return script;
}

/// What all panels have in common.
std::string style_script()
{
    std::string script = "set encoding utf8\nset lmargin 12\nset rmargin 3\nset grid\n"
                         "set key outside top right horizontal noenhanced\n";
    // A curve on the edge of its panel could not be told from it.
    script += "set autoscale yfix\nset offsets 0, 0, graph 0.03, graph 0.03\n";
    for (std::size_t i = 0; i < curve_colors.size(); ++i)
        script += formatted("set linetype %zu linecolor rgb '%s'\n", i + 1, curve_colors[i]);
    return script + formatted("set linetype cycle %zu\n", curve_colors.size());
}

std::string script_of(const Drawing& drawing, ImageForm form)
{
    std::string data;
    std::size_t curves = 0;
    int panels = 0;
    for (const Picture& picture : drawing.pictures) {
        for (const Panel& panel : panels_of(picture)) {
            ++panels;
            for (const Curve* curve : panel.curves)
                data += data_of(*curve, curves++);
        }
    }
    const int head = height_of_line * (static_cast<int>(drawing.sources.size()) + 1);
    const int height = height_of_panel * panels + head;
    std::string script = formatted(
        "set terminal %s size %d,%d noenhanced font 'DejaVu Sans,10' background 'white'\n",
        form == ImageForm::svg ? "svg" : "pngcairo", width, height);
    script += style_script() + data + "set multiplot\n" + labels_script(drawing, height);
    const double share = static_cast<double>(height_of_panel) / height;
    double bottom = 1.0 - static_cast<double>(head) / height;
    curves = 0;
    for (const Picture& picture : drawing.pictures) {
        const std::vector<Panel> all = panels_of(picture);
        for (const Panel& panel : all) {
            bottom = std::max(bottom - share, 0.0);
            script += "set origin 0, " + number_text(bottom) + "\nset size 1, " +
                      number_text(share) + '\n' +
                      panel_script(drawing, picture, panel, curves, &panel == &all.back());
            curves += panel.curves.size();
        }
    }
    return script + "unset multiplot\n";
}

/// Of what gnuplot says: above it stands the command.
std::string_view last_line(std::string_view text)
{
    text = text.substr(0, text.find_last_not_of(" \n") + 1);
    text.remove_prefix(text.rfind('\n') + 1);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

} // namespace

bool draw_image(const Drawing& drawing, ImageForm form, const Surroundings& outside,
                std::string& image)
{
    // Without the settings of who calls: the same recording gives the same image.
    const platform::ProgramRun run =
        platform::run_program({"gnuplot", "--default-settings"}, script_of(drawing, form));
    if (!run.was_found) {
        outside.complain("gnuplot draws this form and is not installed; the package is "
                         "gnuplot-nox");
        return false;
    }
    if (run.status != 0 || run.output.empty()) {
        outside.complain("gnuplot failed: " + valid_utf8(last_line(run.errors)));
        return false;
    }
    image = run.output;
    return true;
}

} // namespace companion
