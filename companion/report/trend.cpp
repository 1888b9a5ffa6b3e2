#include "companion/page.h"
#include "companion/report/commands.h"
#include "companion/report/load.h"
#include "companion/report/pictures.h"
#include "companion/report/shapes.h"
#include "companion/report/show.h"
#include "companion/report/sql_output.h"
#include "companion/text.h"
#include "frame/platform/platform.h"
#include "frame/text/format.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <tuple>

namespace companion
{

namespace
{

// ---- What is read ----

struct Sighting {
    double day;
    double value;
    std::optional<Band> band;
};

/// A unit, wherever it sat.
struct Unit {
    std::string product_number;
    bool is_simulated;
    std::string place; ///< where several have its number in one report; else empty

    [[nodiscard]] bool operator<(const Unit& other) const
    {
        return std::tie(product_number, is_simulated, place) <
               std::tie(other.product_number, other.is_simulated, other.place);
    }
    [[nodiscard]] std::string name() const
    {
        return "P/N " + product_number + (place.empty() ? "" : " in " + place);
    }
    [[nodiscard]] std::string title() const
    {
        return name() + (place.empty() ? "" : ", one of several with this number") +
               simulated_mark(is_simulated);
    }
};

/// What is followed: a key of a unit.
struct Followed {
    Unit unit;
    std::string key;
    [[nodiscard]] bool operator<(const Followed& other) const
    {
        return std::tie(unit, key) < std::tie(other.unit, other.key);
    }
};

struct Course {
    std::vector<Sighting> sightings;
    std::string unit; ///< of the values
};

using Courses = std::map<Followed, Course>;

/// The straight line through a course.
struct Slope {
    double per_day = 0;
    bool is_certain = false; ///< it is more than chance
};

Slope slope_of(const std::vector<Sighting>& sightings)
{
    const auto count = static_cast<double>(sightings.size());
    double day = 0, value = 0, squares = 0, products = 0;
    for (const Sighting& sighting : sightings) {
        day += sighting.day / count;
        value += sighting.value / count;
    }
    for (const Sighting& sighting : sightings) {
        squares += (sighting.day - day) * (sighting.day - day);
        products += (sighting.day - day) * (sighting.value - value);
    }
    if (!(squares > 0))
        return {};
    Slope slope{products / squares};
    double rest = 0;
    for (const Sighting& sighting : sightings)
        rest += std::pow(sighting.value - value - slope.per_day * (sighting.day - day), 2);
    constexpr double errors_to_be_certain = 4;
    slope.is_certain =
        count >= 4 &&
        std::abs(slope.per_day) > errors_to_be_certain * std::sqrt(rest / (count - 2) / squares);
    return slope;
}

/// After how many days a course leaves its band when it goes on; infinite when it does not.
double days_left(const Course& course, const Slope& slope)
{
    const Sighting& last = course.sightings.back();
    if (!slope.is_certain || !last.band)
        return INFINITY;
    const double end = slope.per_day > 0 ? last.band->high : last.band->low;
    return std::max(0.0, (end - last.value) / slope.per_day);
}

/// A course as a row of small bars; in ASCII, of characters that are fuller the higher they stand.
std::string bars(const std::vector<Sighting>& sightings, bool has_utf8)
{
    constexpr const char* blocks[] = {"\u2581", "\u2582", "\u2583", "\u2584",
                                      "\u2585", "\u2586", "\u2587", "\u2588"};
    constexpr const char* characters[] = {"_", ".", "-", "=", "+", "*", "%", "#"};
    const auto& heights = has_utf8 ? blocks : characters;
    constexpr std::size_t most = 24;
    const auto [low, high] =
        std::minmax_element(sightings.begin(), sightings.end(),
                            [](const Sighting& a, const Sighting& b) { return a.value < b.value; });
    const double size = high->value - low->value;
    std::string text;
    const std::size_t first = sightings.size() > most ? sightings.size() - most : 0;
    for (std::size_t i = first; i < sightings.size(); ++i) {
        const double part = size > 0 ? (sightings[i].value - low->value) / size : 0.5;
        text += heights[static_cast<std::size_t>(part * 7.99)];
    }
    return text;
}

// ---- What is shown ----

class Trend
{
public:
    Trend(const TrendRequest& request, const Surroundings& outside)
        : request_{request}, outside_{outside}
    {
    }

    int run()
    {
        std::vector<std::string> read = request_.sources;
        read.push_back(request_.limits);
        if (!load_limits(request_.limits, outside_, limits_) ||
            !may_be_written({request_.sql, request_.html}, read, outside_))
            return wrong_usage;
        if (!request_.sql.empty()) {
            if (!sql_.open(request_.sql, outside_))
                return wrong_usage;
            begin_sql(sql_);
        }
        for (const std::string& name : request_.sources)
            take(name);
        if (sql_.is_open())
            end_sql(sql_);
        join_places();
        for (auto& [followed, course] : courses_)
            std::stable_sort(course.sightings.begin(), course.sightings.end(),
                             [](const Sighting& a, const Sighting& b) { return a.day < b.day; });
        const bool is_written = sql_.close() && write_page() && print();
        if (reports_ == 0)
            outside_.complain("none of these is a complete report");
        return is_written && reports_ > 0 && all_read_ ? 0 : wrong_usage;
    }

private:
    // ---- Reading ----

    void take(const std::string& name)
    {
        namespace fs = std::filesystem;
        std::error_code error;
        const fs::path path{std::u8string{name.begin(), name.end()}};
        if (name == "-" || !fs::is_directory(path, error)) {
            take_report(name, true);
            return;
        }
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator{path, error}) {
            const std::u8string text = entry.path().u8string();
            if (entry.is_regular_file(error))
                names.emplace_back(text.begin(), text.end());
        }
        std::sort(names.begin(), names.end());
        for (const std::string& found : names)
            take_report(found, false);
    }

    void take_report(const std::string& name, bool is_named)
    {
        Report report;
        if (platform::stop_signal() != 0)
            return;
        if (!load_report(name, outside_, report)) {
            all_read_ = false;
            return;
        }
        if (!report.is_report) {
            all_read_ = all_read_ && !is_named; // a folder may hold other files
            if (is_named)
                outside_.complain(valid_utf8(name) + ": NOT A REPORT");
            return;
        }
        const Judged judged = judge(report, limits_, {outside_.today, true});
        if (sql_.is_open())
            write_sql(sql_, judged);
        if (judged.verdict == Verdict::incomplete) {
            outside_.complain(valid_utf8(name) + ": INCOMPLETE, left out");
            return;
        }
        ++reports_;
        const double day = days_of(report.text_of("run/created")).value_or(NAN);
        std::set<std::string> numbers;
        for (const TestedUnit& unit : tested_units(report)) {
            take_unit(judged, unit, day);
            if (!numbers.insert(unit.product_number).second)
                several_.insert({unit.product_number, report.is_simulated, ""});
        }
        note_waived(judged);
    }

    void note_waived(const Judged& judged)
    {
        std::set<std::string> texts; // each once for a report
        for (const Finding& finding : judged.findings) {
            if (finding.kind != Finding::Kind::waived)
                continue;
            const std::string_view number =
                judged.report->text_of(std::string{unit_of(finding.key)} + "/product-number");
            texts.insert((number.empty() ? "" : "P/N " + utf8(number) + ' ') + finding.key + ' ' +
                         valid_utf8(finding.reason));
        }
        for (const std::string& text : texts)
            ++waived_[text];
    }

    /// A unit that moved is one unit, unless its number does not tell which one.
    void join_places()
    {
        Courses joined;
        for (auto& [followed, course] : courses_) {
            Followed whole = followed;
            whole.unit.place.clear();
            Course& into = joined[several_.count(whole.unit) != 0 ? followed : whole];
            into.sightings.insert(into.sightings.end(), course.sightings.begin(),
                                  course.sightings.end());
            into.unit = course.unit;
        }
        courses_ = std::move(joined);
    }

    void take_unit(const Judged& judged, const TestedUnit& unit, double day)
    {
        for (const Judgement& judgement : judged.judgements) {
            const Fact& fact = *judgement.fact;
            const bool is_wanted = request_.key.empty() ? judgement.band.has_value()
                                                        : fits_pattern(fact.key, request_.key);
            if (!is_wanted || !fact.value || !std::isfinite(*fact.value) ||
                unit_of(fact.key) != unit.unit)
                continue;
            Course& course =
                courses_[{{unit.product_number, judged.report->is_simulated, unit.unit},
                          fact.key.substr(unit.unit.size() + 1)}];
            course.sightings.push_back({day, *fact.value, judgement.band});
            course.unit = utf8(fact.unit);
        }
    }

    // ---- Showing ----

    [[nodiscard]] std::string first_to_leave() const
    {
        const Followed* first = nullptr;
        double least = INFINITY;
        for (const auto& [followed, course] : courses_) {
            const double days = days_left(course, slope_of(course.sightings));
            if (days < least) {
                least = days;
                first = &followed;
            }
        }
        if (first == nullptr)
            return "Nothing moves towards the end of its band.";
        return "First to leave its band if it goes on: " + first->unit.name() + ' ' + first->key +
               formatted(", in %.0f days.", least);
    }

    /// What was waived, and in how many reports.
    [[nodiscard]] std::vector<std::string> waived_texts() const
    {
        std::vector<std::string> texts;
        for (const auto& [text, count] : waived_)
            texts.push_back(formatted("In %zu of %zu reports: ", count, reports_) + text);
        return texts;
    }

    [[nodiscard]] bool print()
    {
        if (request_.sql == "-" || request_.html == "-")
            return true;
        Printer printer{outside_};
        printer.print(formatted("%zu reports\n", reports_));
        std::size_t width = 0;
        for (const auto& [followed, course] : courses_)
            width = std::max(width, followed.key.size());
        std::string unit;
        for (const auto& [followed, course] : courses_) {
            if (unit != followed.unit.title())
                printer.print(followed.unit.title() + '\n');
            unit = followed.unit.title();
            const Slope slope = slope_of(course.sightings);
            printer.print("  " + followed.key + std::string(width - followed.key.size(), ' '));
            printer.print(Color::value,
                          formatted("  %12.6g  %12.6g ", course.sightings.front().value,
                                    course.sightings.back().value) +
                              course.unit);
            printer.print(formatted("  %+.3g a day  ", slope.per_day) +
                          bars(course.sightings, outside_.has_utf8) + '\n');
        }
        for (const std::string& text : waived_texts())
            printer.print(Color::warning, text + '\n');
        printer.print(Color::warning, first_to_leave() + '\n');
        return printer.flush();
    }

    [[nodiscard]] bool write_page()
    {
        TextFile page;
        if (request_.html.empty())
            return true;
        if (!page.open(request_.html, outside_))
            return false;
        begin_page(page, "Trends of acceptance tests");
        page.write(formatted("<main>\n<h1>Trends of %zu acceptance tests</h1>\n<p>", reports_) +
                   escaped_markup(first_to_leave()) + "</p>\n");
        for (const std::string& text : waived_texts())
            page.write("<p>" + escaped_markup(text) + "</p>\n");
        std::string unit;
        for (const auto& [followed, course] : courses_) {
            if (unit != followed.unit.title())
                page.write(std::string{unit.empty() ? "" : "</tbody></table>\n"} + "<h2>" +
                           escaped_markup(followed.unit.title()) +
                           "</h2>\n<table><thead><tr><th>What</th><th>First</th><th>Last</th>"
                           "<th>A day</th><th>Course</th></tr></thead><tbody>\n");
            unit = followed.unit.title();
            write_row(page, followed, course);
        }
        page.write(std::string{unit.empty() ? "" : "</tbody></table>\n"} + "</main>\n");
        end_page(page);
        return page.close();
    }

    static void write_row(TextFile& page, const Followed& followed, const Course& course)
    {
        std::vector<double> values;
        for (const Sighting& sighting : course.sightings)
            values.push_back(sighting.value);
        const auto cell = [&](double value, const char* format) {
            return "<td>" + formatted("%.6g ", value) + escaped_markup(course.unit) + format +
                   "</td>";
        };
        page.write("<tr><td class=\"key\">" + escaped_markup(followed.key) + "</td>" +
                   cell(values.front(), "") + cell(values.back(), "") +
                   cell(slope_of(course.sightings).per_day, "/d") + "<td class=\"picture\">" +
                   trend_picture(values, course.sightings.back().band) + "</td></tr>\n");
    }

    const TrendRequest& request_;
    const Surroundings& outside_;
    Limits limits_;
    TextFile sql_;
    Courses courses_;
    std::set<Unit> several_;                    ///< whose numbers occurred twice in a report
    std::map<std::string, std::size_t> waived_; ///< what was waived, in how many reports
    std::size_t reports_ = 0;
    bool all_read_ = true;
};

} // namespace

int follow_reports(const TrendRequest& request, const Surroundings& outside)
{
    return Trend{request, outside}.run();
}

} // namespace companion
