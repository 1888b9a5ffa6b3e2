#include "companion/report/commands.h"
#include "companion/report/load.h"
#include "companion/report/reading/written_forms.h"
#include "companion/report/show.h"
#include "companion/text.h"
#include "frame/platform/platform.h"

#include <algorithm>

namespace companion
{

bool load_limits(const std::string& file, const Surroundings& outside, Limits& limits)
{
    std::string text = default_limits();
    if (!file.empty() && !read_whole_file(file, outside, text))
        return false;
    std::string problem;
    if (!read_limits(std::move(text), limits, problem)) {
        outside.complain(valid_utf8(file) + ':' + valid_utf8(problem));
        return false;
    }
    if (!file.empty())
        limits.own_patterns = patterns_of_the_user(limits);
    return true;
}

bool load_report(const std::string& name, const Surroundings& outside, Report& report)
{
    std::string bytes;
    if (!read_whole_file(name, outside, bytes))
        return false;
    report = read_report(name, std::move(bytes));
    return true;
}

namespace
{

/// The files that were asked for.
struct WrittenForms {
    TextFile json, junit, html;

    [[nodiscard]] bool open(const CheckRequest& request, const Surroundings& outside)
    {
        const auto opened = [&](TextFile& file, const std::string& name) {
            return name.empty() || file.open(name, outside);
        };
        if (!opened(json, request.json) || !opened(junit, request.junit) ||
            !opened(html, request.html))
            return false;
        if (json.is_open())
            begin_json(json);
        if (junit.is_open())
            begin_junit(junit);
        if (html.is_open())
            begin_html(html, request.reports.size() > 1);
        return true;
    }

    void write(const Judged& judged)
    {
        if (json.is_open())
            write_json(json, judged, is_first_);
        if (junit.is_open())
            write_junit(junit, judged);
        if (html.is_open())
            write_html(html, judged);
        is_first_ = false;
    }

    /// A report that could not be read is missing nowhere.
    void write_unreadable(const std::string& name)
    {
        if (junit.is_open())
            write_unreadable_junit(junit, name);
        if (html.is_open())
            write_unreadable_html(html, name);
        unreadable_.push_back(name);
    }

    [[nodiscard]] bool close()
    {
        if (json.is_open())
            end_json(json, unreadable_);
        if (junit.is_open())
            end_junit(junit);
        if (html.is_open())
            end_html(html);
        const bool good[] = {json.close(), junit.close(), html.close()};
        return good[0] && good[1] && good[2];
    }

private:
    bool is_first_ = true;
    std::vector<std::string> unreadable_;
};

} // namespace

int check_reports(const CheckRequest& request, const Surroundings& outside)
{
    Limits limits;
    WrittenForms forms;
    std::vector<std::string> read = request.reports;
    read.push_back(request.limits);
    if (!load_limits(request.limits, outside, limits) ||
        !may_be_written({request.json, request.junit, request.html}, read, outside) ||
        !forms.open(request, outside))
        return wrong_usage;
    const JudgeOptions options{outside.today, request.accept_simulated};
    const bool output_is_taken = request.json == "-" || request.junit == "-" || request.html == "-";
    Printer printer{outside};
    int worst = 0;
    for (const std::string& name : request.reports) {
        Report report;
        if (!load_report(name, outside, report)) {
            worst = wrong_usage;
            forms.write_unreadable(name);
            continue;
        }
        const Judged judged = judge(report, limits, options);
        worst = std::max(worst, exit_status(judged.verdict));
        if (!output_is_taken)
            show_verdict(printer, judged, request.all_facts);
        forms.write(judged);
        if (platform::stop_signal() != 0)
            break;
    }
    const bool is_written = forms.close();
    return printer.flush() && is_written ? worst : wrong_usage;
}

int print_limits(const std::string& file, const Surroundings& outside)
{
    Limits limits;
    if (!load_limits(file, outside, limits))
        return wrong_usage;
    TextFile output;
    if (!output.open("-", outside))
        return wrong_usage;
    output.write(limits.source);
    return output.close() ? 0 : wrong_usage;
}

} // namespace companion
