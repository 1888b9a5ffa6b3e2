#include "companion/journal/commands.h"
#include "companion/journal/load.h"
#include "companion/journal/reading/values.h"
#include "companion/report/commands.h"
#include "companion/text.h"
#include "frame/text/format.h"

namespace companion
{

namespace
{

/// "2026-03-14 09:26:53 +01:00" of a time of the journal.
std::string day_and_time(const std::string& time)
{
    if (time.size() < 32)
        return valid_utf8(time);
    return valid_utf8(time.substr(0, 10) + ' ' + time.substr(11, 8) + ' ' + time.substr(26));
}

/// "09:26:53.589"
std::string time_of_day(const std::string& time)
{
    return valid_utf8(time.size() < 23 ? time : time.substr(11, 12));
}

void print_heading(Printer& printer, const journal::Heading& heading)
{
    std::string line = valid_utf8(heading.program);
    for (const std::string& argument : heading.arguments)
        line += ' ' + valid_utf8(argument);
    printer.print(Color::value, line);
    printer.print("\n" + day_and_time(heading.time) + ", on " + valid_utf8(heading.system) +
                  ", device library " + version_text(heading.library_version) + ": " +
                  valid_utf8(heading.library) + "\n\n");
    printer.print("    call  time          ms a call          call and result\n");
}

/// What came back.
void print_result(Printer& printer, const journal::RecordedCall& call)
{
    if (call.failed()) {
        std::string text = "  failed (" + std::to_string(call.status) + ')';
        if (!call.error.empty())
            text += ": " + device_text(call.error);
        printer.print(Color::bad, text);
        return;
    }
    std::string text;
    if (call.info().returns == devlib::Returns::text)
        text = call.text ? '"' + device_text(*call.text) + '"' : "null";
    else if (call.info().returns == devlib::Returns::version)
        text = version_text(call.version);
    else
        text = journal::values_text(call.info(), call.outputs);
    if (!text.empty())
        printer.print("  " + text);
}

void print_call(Printer& printer, const journal::RecordedCall& call)
{
    const double ms = static_cast<double>(call.us) / static_cast<double>(call.count) / 1000;
    const std::string times = call.count > 1 ? 'x' + std::to_string(call.count) : std::string{};
    printer.print(formatted("%8llu  %s %9.3f %-8s ", static_cast<unsigned long long>(call.number),
                            time_of_day(call.time).c_str(), ms, times.c_str()));
    printer.print(Color::value, journal::call_text(call.info(), call.inputs));
    print_result(printer, call);
    printer.print("\n");
}

void print_end(Printer& printer, const journal::Reader& reader)
{
    if (reader.ending())
        printer.print("\n" + day_and_time(reader.ending()->time) +
                      ", the end: " + std::to_string(reader.ending()->calls) + " calls, " +
                      std::to_string(reader.ending()->failures) + " failures\n");
    else
        printer.print(Color::warning, reader.is_torn()
                                          ? "\nThe journal is torn off in its last line.\n"
                                          : "\nThe journal has no end: the program runs, was "
                                            "killed, or called nothing.\n");
}

} // namespace

int show_journal(const ShowRequest& request, const Surroundings& outside)
{
    Printer printer{outside};
    Surroundings below = outside; // what is wrong is told below the calls before it
    below.err = [&](std::string_view message) {
        (void)printer.flush();
        return outside.err(message);
    };
    const bool is_sound = read_journal(
        request.file, below,
        [&](const journal::Heading& heading) { print_heading(printer, heading); },
        [&](const journal::RecordedCall& call) {
            if (!request.only_failures || call.failed())
                print_call(printer, call);
        },
        [&](const journal::Reader& reader) { print_end(printer, reader); });
    return printer.flush() && is_sound ? 0 : wrong_usage;
}

} // namespace companion
