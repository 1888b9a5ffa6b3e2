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

std::string data_of(const Curve& curve, std::size_t index)
{
    std::string data = formatted("$curve%zu << END\n", index);
    for (const Point& point : curve.points)
        data +=
            std::isnan(point.y) ? "\n" : number_text(point.x) + ' ' + number_text(point.y) + '\n';
    return data + "END\n";
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
    for (const Curve* curve : panel.curves)
        curves += (curves.empty() ? "plot " : ", ") + formatted("$curve%zu", first_curve++) +
                  " using 1:2 with " + (picture.is_over_time ? "lines" : "linespoints") +
                  " title " + quoted(drawing.label_of(*curve)) + " noenhanced";
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
    script += "set encoding utf8\n" + data +
              "set multiplot\nset lmargin 12\nset rmargin 3\nset grid\n"
              "set key outside top right horizontal noenhanced\n" +
              labels_script(drawing, height);
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

} // namespace

bool draw_image(const Drawing& drawing, ImageForm form, const Surroundings& outside,
                std::string& image)
{
    const platform::ProgramRun run = platform::run_program({"gnuplot"}, script_of(drawing, form));
    if (!run.was_found) {
        outside.complain("gnuplot draws this form and is not installed; the package is "
                         "gnuplot-nox");
        return false;
    }
    if (run.status != 0 || run.output.empty()) {
        std::string_view said = run.errors;
        while (said.starts_with('\n') || said.starts_with(' '))
            said.remove_prefix(1);
        outside.complain("gnuplot failed: " + valid_utf8(said.substr(0, said.find('\n'))));
        return false;
    }
    image = run.output;
    return true;
}

} // namespace companion
