#include "tests/support/trial.h"

#include "frame/device_library.h"
#include "frame/entry.h"
#include "frame/terminal/characters.h"
#include "frame/terminal/console.h"
#include "simulator/simulator.h"

#include <algorithm>

namespace
{

constexpr std::string_view library_prefix = "COM_KOV_CTRL_";

std::vector<std::string> split(std::string_view command_line)
{
    std::vector<std::string> arguments = {"/usr/bin/KOV-Controller.exe"};
    bool in_argument = false;
    bool quoted = false;
    for (const char c : command_line) {
        if (c == ' ' && !quoted) {
            in_argument = false;
            continue;
        }
        if (!in_argument)
            arguments.emplace_back();
        in_argument = true;
        if (c == '\'')
            quoted = !quoted;
        else
            arguments.back() += c;
    }
    return arguments;
}

char mark_of(Color color)
{
    constexpr std::string_view marks = "0123456.KBGCRMYW";
    return marks[static_cast<std::size_t>(color)];
}

std::string marked_row(int row)
{
    std::string text;
    std::string blanks; // kept back: a mark stands directly at what it colours
    Color color = Color::label;
    const auto change_to = [&](Color next) {
        if (next != color && color != Color::label)
            text += "{.}";
        text += blanks;
        blanks.clear();
        if (next != color && next != Color::label)
            text += std::string{"{"} + mark_of(next) + '}';
        color = next;
    };
    for (const Cell& cell : console.cells(row)) {
        if (cell.is_blank()) {
            blanks += ' ';
        } else if (cell.character != 0) {
            change_to(cell.color);
            append_utf8(text, cell.character);
        }
    }
    change_to(Color::label);
    return text;
}

} // namespace

Trial::Trial(ScenarioLines lines)
{
    reset_virtual_platform();
    simulator::reset_for_test();
    forget_device_library();
    (void)device_library(); // for tests that run no command line
    simulator::observe_calls([this](const simulator::CallRecord& call) {
        std::string_view name = call.function;
        if (name.starts_with(library_prefix))
            name.remove_prefix(library_prefix.size());
        calls.push_back(std::string{name} + '(' + call.inputs + ')');
    });
    for (const ScenarioLine& line : lines)
        instrument(line.text);
}

Trial::~Trial()
{
    simulator::observe_calls({});
}

void Trial::instrument(std::string_view line)
{
    std::string problem;
    if (!simulator::apply(line, problem))
        ADD_FAILURE() << "scenario line \"" << line << "\": " << problem;
}

void Trial::type(std::int64_t at_ms, std::string_view keys)
{
    auto& typed = virtual_platform.typed;
    const auto later = std::find_if(typed.begin(), typed.end(), [at_ms](const TypedKeys& other) {
        return other.at_ms > at_ms;
    });
    typed.insert(later, {at_ms, std::string{keys}});
}

void Trial::pipe_in(std::string_view bytes)
{
    virtual_platform.input_is_terminal = false;
    if (!bytes.empty())
        type(0, bytes);
}

void Trial::run(std::string_view command_line)
{
    std::vector<std::string> arguments = split(command_line);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    exit_status = run_program(static_cast<int>(arguments.size()), pointers.data());
}

std::string Trial::screen() const
{
    std::string text;
    std::string empty_lines; // kept back: those at the end do not count
    for (int row = console.first_row(); row <= console.last_row(); ++row) {
        const std::string line = marked_row(row);
        empty_lines += '\n';
        if (line.empty())
            continue;
        text += empty_lines.substr(1) + line + '\n';
        empty_lines.clear();
    }
    return text;
}

std::string Trial::display() const
{
    std::string text = screen();
    for (const std::string_view frame :
         {"{W}COM3{.} opened for the communication stream\n", "Program completed\n"}) {
        if (const std::size_t at = text.find(frame); at != std::string::npos)
            text.erase(at, frame.size());
    }
    return text;
}

std::ptrdiff_t Trial::calls_of(std::string_view beginning) const
{
    return std::count_if(calls.begin(), calls.end(), [beginning](const std::string& call) {
        return call.starts_with(beginning);
    });
}

QuickTrial::QuickTrial()
    : Trial{"latency 10",
            "uptime 100",
            "period.housekeeping 10",
            "period.fan 10",
            "period.monitoring 10",
            "period.voltage 10",
            "period.current 10",
            "reply GetModulePresence.flags[2] 0",
            "reply GetModulePresence.flags[3] 0",
            "reply GetModuleHwType.type@1 051C800Ah"}
{
}

std::string display_of(const std::string& switches, ScenarioLines lines)
{
    Trial trial{lines};
    trial.run("3 " + switches + " -T");
    return trial.display();
}

std::string live_display_of(const std::string& switches, std::int64_t escape_ms,
                            ScenarioLines lines)
{
    Trial trial{lines};
    trial.instrument("latency 10");
    trial.type(escape_ms, "\033");
    trial.run("3 " + switches + " -T");
    return trial.display();
}

void expect_shown(std::initializer_list<Shown> cases)
{
    for (const Shown& c : cases) {
        SCOPED_TRACE(c.switches + ", " + std::string{c.line});
        Trial trial;
        if (!c.line.empty())
            trial.instrument(c.line);
        trial.run("3 " + c.switches + " -T");
        EXPECT_THAT(trial.display(), c.display);
        EXPECT_TRUE(c.call == nullptr || trial.calls_of(c.call) > 0) << c.call;
    }
}

std::string error_line(std::string_view function, std::string_view time, std::string_view message)
{
    return "{M}2026/03/14, " + std::string{time} + ": Error at COM_KOV_CTRL_" +
           std::string{function} + ": " + std::string{message} + "{.}\n";
}
