#include "companion/log/load_picture.h"
#include "companion/report/output_points.h"
#include "companion/text.h"
#include "protocol/report/report_texts.h"
#include "protocol/report/series.h"

#include <algorithm>
#include <cmath>

namespace companion
{

namespace
{

void add(Picture& picture, Curve curve)
{
    if (!curve.points.empty())
        picture.curves.push_back(std::move(curve));
}

void add_outputs(const Report& report, std::size_t file, Picture& picture)
{
    for (const std::string& unit : report.units) {
        Curve error{file, unit + " error", "V", {}}, current{file, unit + " current", "nA", {}};
        for (const OutputPoint& point : output_points(report, unit)) {
            error.points.push_back({point.target, *point.error->value});
            current.points.push_back({point.target, point.nanoamperes});
        }
        add(picture, std::move(error));
        add(picture, std::move(current));
    }
}

void add_heater_runs(const Report& report, std::size_t file, Picture& picture)
{
    struct Measured {
        const char *key, *unit;
    };
    for (const auto& [key, unit] : {Measured{"current", "A"}, Measured{"power", "W"}}) {
        Curve curve{file, std::string{"heater "} + key, unit, {}};
        for (const char* run : heater_runs) {
            const std::string of_run = std::string{"slot0/heater/"} + run + '/';
            const Point point{report.value_of(of_run + "heater-voltage"),
                              report.value_of(of_run + key)};
            if (std::isfinite(point.x) && std::isfinite(point.y))
                curve.points.push_back(point);
        }
        std::sort(curve.points.begin(), curve.points.end(),
                  [](const Point& a, const Point& b) { return a.x < b.x; });
        add(picture, std::move(curve));
    }
}

std::vector<std::string> names_of(const std::vector<const Picture*>& pictures)
{
    std::vector<std::string> names;
    for (const Picture* picture : pictures) {
        for (const Curve& curve : picture->curves)
            names.push_back(curve.name);
    }
    return names;
}

/// Keeps what is wanted of a picture, if that is something, a little wider than its points.
void keep(Picture&& picture, const PictureRequest& request, Drawing& drawing)
{
    std::erase_if(picture.curves, [&](const Curve& curve) { return !request.wants(curve.name); });
    if (picture.curves.empty())
        return;
    picture.low = INFINITY;
    picture.high = -INFINITY;
    for (const Curve& curve : picture.curves) {
        picture.low = std::min(picture.low, curve.points.front().x);
        picture.high = std::max(picture.high, curve.points.back().x);
    }
    const double more = std::max((picture.high - picture.low) * 0.02, 1e-3);
    picture.low -= more;
    picture.high += more;
    drawing.pictures.push_back(std::move(picture));
}

} // namespace

int load_reports(const PictureRequest& request, const Surroundings& outside, Drawing& drawing)
{
    if (!request.from.empty() || !request.to.empty()) {
        outside.complain("what a report tells has no time");
        return wrong_usage;
    }
    Picture outputs{.x_name = "target", .x_unit = "V", .is_over_time = false};
    Picture heater{.x_name = "heater voltage", .x_unit = "V", .is_over_time = false};
    int status = 0;
    for (std::size_t i = 0; i < request.files.size(); ++i) {
        std::string bytes;
        if (!read_whole_file(request.files[i], outside, bytes))
            return wrong_usage;
        const Report report = read_report(request.files[i], std::move(bytes));
        const std::string name = valid_utf8(report.name);
        if (!report.is_report) {
            outside.complain(name + ": this is no report, and the others are");
            return wrong_usage;
        }
        if (!report.problems.empty()) {
            outside.complain(name + ": this report is not whole");
            status = not_whole;
        }
        drawing.sources.push_back({name,
                                   std::string{"acceptance test"} +
                                       (report.is_simulated ? " of a SIMULATED instrument" : ""),
                                   ""});
        add_outputs(report, i, outputs);
        add_heater_runs(report, i, heater);
    }
    const std::vector<std::string> names = names_of({&outputs, &heater});
    if (!names.empty() && !request.finds_all(names, outside))
        return wrong_usage;
    keep(std::move(outputs), request, drawing);
    keep(std::move(heater), request, drawing);
    if (!drawing.pictures.empty())
        return status;
    outside.complain("there is nothing to draw");
    return wrong_usage;
}

} // namespace companion
