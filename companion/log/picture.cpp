#include "companion/log/picture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace companion
{

std::string Drawing::label_of(const Curve& curve) const
{
    return sources.size() > 1 ? curve.name + " (" + sources[curve.file].file + ')' : curve.name;
}

std::vector<Panel> panels_of(const Picture& picture)
{
    std::vector<Panel> panels;
    for (const Curve& curve : picture.curves) {
        const auto same = std::find_if(panels.begin(), panels.end(), [&](const Panel& panel) {
            return panel.unit == curve.unit;
        });
        if (same != panels.end())
            same->curves.push_back(&curve);
        else
            panels.push_back({curve.unit, {&curve}});
    }
    return panels;
}

Range range_of(const std::vector<const Curve*>& curves)
{
    Range range = {INFINITY, -INFINITY};
    for (const Curve* curve : curves) {
        for (const Point& point : curve->points) {
            if (std::isnan(point.y))
                continue;
            range.low = std::min(range.low, point.y);
            range.high = std::max(range.high, point.y);
        }
    }
    if (!(range.low <= range.high))
        return {0.0, 1.0};
    if (range.low == range.high) {
        constexpr double most = std::numeric_limits<double>::max();
        const double more = std::max(std::abs(range.high) * 0.01, 1e-9);
        return {std::max(range.low - more, -most), std::min(range.high + more, most)};
    }
    return range;
}

} // namespace companion
