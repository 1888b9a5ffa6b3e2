#include "tests/torture/torture_run.h"

#include "devlib/functions.h"
#include "frame/terminal/console.h"
#include "simulator/simulator.h"
#include "tests/config/config_trial.h"

#include <cctype>
#include <map>

namespace
{

std::vector<std::string> attached_values(Attached kind)
{
    static const std::map<Attached, std::vector<std::string>> values = {
        {Attached::nothing, {""}},
        {Attached::optional_number, {"", "9600"}},
        {Attached::optional_count, {"5"}},
        {Attached::address, {"0", "1", "_", "*"}},
        {Attached::hv_address, {"1"}},
        {Attached::hv_address_with_optional_ranges, {"1", "1YN"}},
        {Attached::real, {"12.5"}},
        {Attached::set_number, {"5"}},
        {Attached::optional_set_number, {"", "5", "7"}},
    };
    return values.at(kind);
}

std::string next_value(const Switch& row, const std::string& letters)
{
    static const std::map<std::string, std::string> files_to_read = {
        {"XL", "sets.ini"}, {"xl", "current.ini"}, {"Y", "memory.txt"}};
    const auto to_read = files_to_read.find(letters);
    switch (row.next) {
    case Next::nothing:
        return "";
    case Next::yes_no:
        return " y";
    case Next::text:
        return to_read != files_to_read.end() ? ' ' + to_read->second : " out.txt";
    default:
        return " 5";
    }
}

} // namespace

std::vector<Command> commands_of(SwitchTable table)
{
    std::vector<Command> commands;
    for (const Switch& row : table) {
        if (row.session == Session::none)
            continue;
        for (const bool capital : {true, false}) {
            std::string letters = row.letters;
            for (char& c : letters)
                c = static_cast<char>(capital ? c : std::tolower(static_cast<unsigned char>(c)));
            const bool same = !capital && row.form == Form::either; // perhaps not continuous
            if (row.form == (capital ? Form::lower : Form::capital) ||
                (same && (letters == row.letters || row.session == Session::required)))
                continue;
            std::vector<std::string> values = attached_values(row.attached);
            if (same)
                values = {values.back()};
            for (const std::string& value : values) {
                std::string switches = "-";
                switches.append(letters).append(value).append(next_value(row, letters));
                commands.push_back({letters, switches, row.session == Session::required});
            }
        }
    }
    return commands;
}

void make_files_to_read()
{
    Trial trial;
    make_set(trial, 5, "active", true);
    trial.run("3 -xs current.ini -XS sets.ini -y memory.txt -T");
}

Outcome outcome_of(const std::string& switches, const std::vector<std::size_t>& failing,
                   const OfferedLibrary* library)
{
    QuickTrial trial;
    trial.instrument("latency 1");
    make_set(trial, 5, "active", true);
    make_set(trial, 7, "deleted", false);
    trial.pipe_in("yyyyyyyyyy"); // answers all questions; for displays so many cycles, then Esc
    for (const std::size_t number : failing)
        trial.instrument("fail * at " + std::to_string(number));
    Outcome outcome;
    simulator::observe_calls([&outcome](const simulator::CallRecord& call) {
        const auto& function = devlib::functions[devlib::find_function(call.function)];
        if (function.returns == devlib::Returns::status)
            outcome.calls.push_back({std::string{function.name()}, call.inputs, call.status != 0,
                                     console.cursor_visible()});
    });
    virtual_platform.library = library;
    trial.run("3 " + switches + " -pn -T");
    outcome.screen = trial.screen();
    outcome.output = trial.output();
    outcome.cursor_came_back = // shown after it was hidden for the last time
        outcome.output.rfind("\033[?25h") + 1 >= outcome.output.rfind("\033[?25l") + 1;
    outcome.exit_status = trial.exit_status;
    return outcome;
}

std::vector<std::size_t> calls_to_fail(const Outcome& good)
{
    const std::size_t count = good.calls.size();
    std::map<std::string, std::vector<std::size_t>> by_kind;
    for (std::size_t i = 0; i < count; ++i)
        by_kind[good.calls[i].name].push_back(i + 1);
    std::vector<std::size_t> chosen;
    for (const auto& [name, numbers] : by_kind) {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            if (count <= 40 || i == 0 || (count <= 4000 && (i == 1 || i + 1 == numbers.size())))
                chosen.push_back(numbers[i]);
        }
    }
    return chosen;
}
