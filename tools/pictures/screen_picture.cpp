// Runs a program on a pseudo-terminal and writes what a user sees there as an SVG picture.
//   screen_picture COLUMNSxROWS SECONDS PROGRAM ARGUMENTS OUT
// The picture is taken after that many seconds; then Esc ends the program. The variables of the
// simulated instrument are passed on. The command line above the program's output has the program's
// name without its folder, as a user would type it.

#include "frame/terminal/characters.h"
#include "tests/support/pseudo_terminal.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace
{

// Pixels; a monospaced character is some 0.6 of its size wide.
constexpr int font_size = 14, cell_height = 18, margin = 12;
constexpr double cell_width = 8.4;

/// The console's colours from number 7 on, as classes of texts; another one would be a fault.
const char* color_name(int color)
{
    constexpr int grey = 7;
    constexpr const char* names[] = {"grey", "dark",    "blue",   "green", "cyan",
                                     "red",  "magenta", "yellow", "white"};
    return color < grey ? "unknown" : names[color - grey];
}

/// The terminal's palette on a light and on a dark desktop; bright colours are bold, as the program
/// sends them.
constexpr const char* style = R"(<style>
text { font: 14px "DejaVu Sans Mono", Menlo, Consolas, monospace; white-space: pre; fill: #3d444d }
.white { font-weight: bold; fill: #000 }
.dark { fill: #767d86 }
.blue { font-weight: bold; fill: #0550ae }
.green { font-weight: bold; fill: #116329 }
.cyan { font-weight: bold; fill: #0a6b77 }
.red { font-weight: bold; fill: #b3261e }
.magenta { font-weight: bold; fill: #a3107c }
.yellow { font-weight: bold; fill: #7d5300 }
.dots { fill: #0550ae }
.window { fill: #fff; stroke: #c5cbd3 }
@media (prefers-color-scheme: dark) {
text { fill: #b8bfc8 }
.white { fill: #fff }
.dark { fill: #767d86 }
.blue { fill: #79b8ff }
.green { fill: #56d364 }
.cyan { fill: #56d4dd }
.red { fill: #ff7b72 }
.magenta { fill: #ff7bd5 }
.yellow { fill: #e3b341 }
.dots { fill: #79b8ff }
.window { fill: #15181d; stroke: #3d444d }
}
</style>
)";

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

std::string escaped(const std::string& text)
{
    std::string safe;
    for (const char c : text)
        safe += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string{c};
    return safe;
}

bool is_braille(char32_t character)
{
    return character >= U'\u2800' && character <= U'\u28FF';
}

/// The dots of a row's braille patterns, which few monospaced fonts have.
std::string dots_of_row(const std::vector<EmulatedCell>& cells, int row)
{
    // Column and row of the dot that each bit of a pattern stands for.
    constexpr int places[8][2] = {{0, 0}, {0, 1}, {0, 2}, {1, 0}, {1, 1}, {1, 2}, {0, 3}, {1, 3}};
    std::string path;
    for (std::size_t at = 0; at < cells.size(); ++at) {
        if (!is_braille(cells[at].character))
            continue;
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((cells[at].character >> bit & 1U) == 0)
                continue;
            const double x = cell_width * (static_cast<double>(at) + places[bit][0] / 2.0);
            const double y = cell_height * (row - 1 + places[bit][1] / 4.0);
            path += 'M' + number(margin + x + 1) + ' ' + number(margin + y + 1) + "h2v2h-2z";
        }
    }
    return path.empty() ? path : "<path class=\"dots\" d=\"" + path + "\"/>\n";
}

/// A row's texts, each at its place and as wide as its cells, whatever the font is: one for what
/// has one colour and no gap of two blanks.
std::string picture_of_row(const std::vector<EmulatedCell>& cells, int row)
{
    std::string picture;
    const auto is_blank = [&](std::size_t at) {
        return at >= cells.size() || cells[at].character == U' ' || is_braille(cells[at].character);
    };
    for (std::size_t begin = 0; begin < cells.size();) {
        if (is_blank(begin)) {
            ++begin;
            continue;
        }
        std::size_t end = begin;
        std::string text;
        const int color = cells[begin].color;
        while (!is_blank(end) ? cells[end].color == color
                              : !is_blank(end + 1) && cells[end + 1].color == color)
            append_utf8(text, cells[end++].character);
        picture += std::string{"<text class=\""} + color_name(color) + "\" x=\"" +
                   number(margin + cell_width * static_cast<double>(begin)) + "\" y=\"" +
                   std::to_string(margin + cell_height * (row - 1) + font_size) +
                   "\" textLength=\"" + number(cell_width * static_cast<double>(end - begin)) +
                   "\">" + escaped(text) + "</text>\n";
        begin = end;
    }
    return picture;
}

std::string picture_of(const TerminalEmulator& screen)
{
    int rows = 0;
    std::string texts;
    for (int row = 1; row <= screen.size().rows; ++row) {
        const std::string picture =
            picture_of_row(screen.cells(row), row) + dots_of_row(screen.cells(row), row);
        texts += picture;
        rows = picture.empty() ? rows : row;
    }
    const std::string width = number(2 * margin + cell_width * screen.size().columns);
    const std::string height = std::to_string(2 * margin + cell_height * rows);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
           "\" viewBox=\"0 0 " + width + ' ' + height + "\">\n" + style +
           "<rect class=\"window\" x=\"0.5\" y=\"0.5\" rx=\"6\" width=\"" +
           number(2 * margin + cell_width * screen.size().columns - 1) + "\" height=\"" +
           std::to_string(2 * margin + cell_height * rows - 1) + "\"/>\n" + texts + "</svg>\n";
}

} // namespace

int main(int argc, char** argv)
{
    TerminalSize size;
    constexpr int expected_arguments = 6;
    if (argc != expected_arguments ||
        std::sscanf(argv[1], "%dx%d", &size.columns, &size.rows) != 2) {
        std::fputs("usage: screen_picture COLUMNSxROWS SECONDS PROGRAM ARGUMENTS OUT\n", stderr);
        return EXIT_FAILURE;
    }
    const std::string program = argv[3];
    const std::string arguments = argv[4];
    Launch launch{.program = program,
                  .arguments = arguments,
                  .environment = {{"TERM", "xterm-256color"}, {"LC_ALL", "C.UTF-8"}},
                  .size = size,
                  .on_screen = "\033[20h$ " + program.substr(program.rfind('/') + 1) + ' ' +
                               arguments + '\n'};
    for (const char* name : {"KOV_SIMULATOR_STATE", "KOV_SIMULATOR_SCENARIO"}) {
        if (const char* value = std::getenv(name))
            launch.environment[name] = value;
    }
    PseudoTerminal terminal{launch};
    using Clock = std::chrono::steady_clock;
    const auto due = Clock::now() + std::chrono::duration<double>{std::atof(argv[2])};
    const bool taken = terminal.wait_until([&] { return Clock::now() >= due; });
    std::ofstream{argv[5]} << picture_of(terminal.screen);
    terminal.type("\033");
    if (!taken || terminal.exit_status() != EXIT_SUCCESS) {
        std::fputs("screen_picture: the program ended otherwise\n", stderr);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
