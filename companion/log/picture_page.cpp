#include "companion/log/page_parts.h"
#include "companion/log/picture.h"
#include "companion/page.h"
#include "companion/text.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace companion
{

namespace
{

constexpr const char* style = R"(
@media screen and (prefers-color-scheme: dark) { :root { --curve0: #7db4f5; --curve1: #ff8a80;
  --curve2: #5fcf86; --curve3: #f0b849; --curve4: #c79bf2; --curve5: #4fd0d8; --curve6: #f58ac6;
  --curve7: #aab4c0; } }
.u-legend { text-align: left; } .u-legend .u-value { font-variant-numeric: tabular-nums; min-width: 11em;
  display: inline-block; } .u-legend td, .u-legend th { border: 0; color: var(--ink); }
.uplot { width: 100%; } .u-inline.u-live th::after { content: ": "; }
.u-select { background: var(--mark); opacity: .25; }
.u-cursor-x, .u-cursor-y, .u-hz .u-cursor-x { border-color: var(--faint); }
)";

std::string colors_style()
{
    std::string text = ":root {";
    for (std::size_t i = 0; i < curve_colors.size(); ++i)
        text += " --curve" + std::to_string(i) + ": " + curve_colors[i] + ';';
    return text + " }";
}

/// A number or, of a gap, null.
void add_number(std::string& text, double value)
{
    const std::string digits = number_text(value);
    text += digits.empty() ? "null" : digits;
}

/// JSON that can stand within an element of HTML.
std::string json_text(const std::string& text)
{
    std::string quoted = nlohmann::json(text).dump();
    for (std::size_t at = 0; (at = quoted.find('<', at)) != std::string::npos;)
        quoted.replace(at, 1, "\\u003c");
    return quoted;
}

void write_points(TextFile& file, const Picture& picture, const Curve& curve)
{
    std::string x, y;
    std::int64_t before_ms = 0;
    for (const Point& point : curve.points) {
        if (picture.is_over_time) {
            const std::int64_t ms = std::llround(point.x * 1000);
            x += std::to_string(ms - before_ms);
            before_ms = ms;
        } else {
            add_number(x, point.x);
        }
        add_number(y, point.y);
        x += ',';
        y += ',';
    }
    if (!x.empty()) {
        x.pop_back();
        y.pop_back();
    }
    file.write("\"x\":[" + x + "],\n\"y\":[" + y + "]}");
}

void write_panel(TextFile& file, const Drawing& drawing, const Picture& picture, const Panel& panel)
{
    file.write("{\"unit\":" + json_text(panel.unit) + ",\"curves\":[");
    const char* between = "";
    for (const Curve* curve : panel.curves) {
        file.write(between + std::string{"\n{\"label\":"} + json_text(drawing.label_of(*curve)) +
                   ",");
        write_points(file, picture, *curve);
        between = ",";
    }
    file.write("]}");
}

void write_picture(TextFile& file, const Drawing& drawing, const Picture& picture)
{
    file.write(std::string{"{\"overTime\":"} + (picture.is_over_time ? "true" : "false") +
               ",\"xName\":" + json_text(picture.x_name) +
               ",\"xUnit\":" + json_text(picture.x_unit) + ",\"low\":" + number_text(picture.low) +
               ",\"high\":" + number_text(picture.high) + ",\"panels\":[");
    const char* between = "";
    for (const Panel& panel : panels_of(picture)) {
        file.write(between);
        write_panel(file, drawing, picture, panel);
        between = ",";
    }
    file.write("]}");
}

void write_data(TextFile& file, const Drawing& drawing)
{
    file.write("<script type=\"application/json\" id=\"data\">\n{\"starts\":[");
    const char* between = "";
    for (const Drawing::Source& source : drawing.sources) {
        file.write(between + json_text(source.start));
        between = ",";
    }
    file.write("],\"pictures\":[");
    between = "";
    for (const Picture& picture : drawing.pictures) {
        file.write(between);
        write_picture(file, drawing, picture);
        between = ",\n";
    }
    file.write("]}\n</script>\n");
}

} // namespace

void write_drawing_page(TextFile& file, const Drawing& drawing)
{
    // Nothing from outside, whatever a name in the data tries.
    begin_page(file, "Measurements",
               "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
               "style-src 'unsafe-inline'; script-src 'unsafe-inline'; img-src data:\">\n<style>" +
                   std::string{uplot_style} + colors_style() + style + "</style>\n");
    file.write("<main>\n");
    for (const Drawing::Source& source : drawing.sources)
        file.write("<h1>" + escaped_markup(source.file) + "</h1>\n<p>" +
                   escaped_markup(source.about) + "</p>\n");
    file.write("<p class=\"faint\">Drag to zoom in, double-click to see all; a click on a name "
               "hides its curve.");
    if (drawing.is_thinned)
        file.write(" Of neighbouring samples only the smallest and the largest are kept.");
    file.write("</p>\n<div id=\"panels\"></div>\n</main>\n");
    write_data(file, drawing);
    file.write("<!-- uPlot:\n" + std::string{uplot_licence} + "-->\n<script>");
    file.write(uplot_script);
    file.write("</script>\n<script>");
    file.write(picture_script);
    file.write("</script>\n");
    end_page(file);
}

} // namespace companion
