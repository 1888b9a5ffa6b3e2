#include "companion/log/statistics.h"
#include "companion/log/thinning.h"
#include "tests/companion/companion_trial.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace
{

/// Voltages, one a second; "" is a second without.
std::string recording(const std::vector<std::string>& volts)
{
    std::string text = "Operating parameters of:\tHV-supply 1\n"
                       "Data acquisition started on:\tSat, 03/14/2026, 09:26:53\n\n"
                       "Time/s\tWidth/ns\tPeriod/ns\tVoltage/V\tCurrent/nA\tPhase/ns\n";
    for (std::size_t i = 0; i < volts.size(); ++i) {
        if (!volts[i].empty())
            text += std::to_string(i) + ".000\t\t\t" + volts[i] + "\t\t\n";
    }
    return text;
}

TEST(LogPlot, KeepsSmallestAndLargestOfEachColumn)
{
    std::mt19937 random{1};
    constexpr std::size_t samples = 1'000'000, columns = 700;
    std::vector<double> values(samples);
    for (double& value : values)
        value = static_cast<double>(random() % 1000);
    values[123'456] = 60'000;
    values[654'321] = -60'000;
    companion::Thinning thinning{
        {.first_ms = 0, .last_ms = samples - 1, .samples = samples, .columns = columns}};
    for (std::size_t i = 0; i < samples; ++i)
        thinning.take(static_cast<std::int64_t>(i), values[i]);
    const std::vector<companion::Point> points = thinning.points();
    EXPECT_LE(points.size(), 2 * columns);
    EXPECT_TRUE(std::is_sorted(points.begin(), points.end(),
                               [](const auto& a, const auto& b) { return a.x < b.x; }));
    for (std::size_t column = 0; column < columns; ++column) {
        const auto end_of = [](std::size_t i) { return (i * samples + columns - 1) / columns; };
        const auto [low, high] =
            std::minmax_element(values.begin() + static_cast<std::ptrdiff_t>(end_of(column)),
                                values.begin() + static_cast<std::ptrdiff_t>(end_of(column + 1)));
        for (const double wanted : {*low, *high})
            EXPECT_TRUE(std::any_of(points.begin(), points.end(), [&](const auto& point) {
                const auto at = static_cast<std::size_t>(std::lround(point.x * 1000));
                return point.y == wanted && at >= end_of(column) && at < end_of(column + 1) &&
                       values[at] == wanted;
            })) << column;
    }
}

TEST(LogPlot, KeepsASpikeAtTheTimeOfTheSmallest)
{
    companion::Thinning thinning{{.first_ms = 0, .last_ms = 9, .samples = 3, .columns = 1}};
    for (const double value : {1.0, 60.0, 2.0})
        thinning.take(5, value);
    const std::vector<companion::Point> points = thinning.points();
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].y, 1.0);
    EXPECT_EQ(points[1].y, 60.0);
}

TEST(LogPlot, DrawsInTheTerminal)
{
    const TemporaryFile one, two;
    // A triangle, a gap, what is no number, and a spike.
    write_file(one.name(),
               recording({"0", "1", "2", "3", "4", "3", "2",   "1", "0", "",  "",  "",
                          "",  "",  "",  "1", "1", "1", "nan", "1", "1", "9", "1", "1"}));
    write_file(two.name(), recording({"9", "9", "9", "9", "9", "9"}));
    KovRun ran = run_kov({"log", "plot", one.name()}, {.columns = 60, .has_utf8 = false});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.out.substr(0, ran.out.find(": ")), one.name());
    EXPECT_EQ(ran.out.substr(ran.out.find('\n') + 1),
              "           Voltage in V\n"
              "         9|                                           :\n"
              "          |                                          .'.\n"
              "          |                                          : :\n"
              "          |      .''..                               : :\n"
              "          |   ..'     '.                            :   :\n"
              "         0|.''          ''..              '''''   '''   '''\n"
              "          +------------------------------------------------\n"
              "           0          time since the start in s          23\n");
    ran = run_kov({"log", "plot", "--only", "Voltage", one.name(), two.name()},
                  {.columns = 60, .has_utf8 = true});
    EXPECT_EQ(ran.status, 0) << ran.err;
    const std::string of_two = "           Voltage (" + two.name() + ") in V\n";
    ASSERT_THAT(ran.out, HasSubstr(of_two));
    const std::size_t first = ran.out.find(" in V\n") + 6, second = ran.out.find(of_two);
    EXPECT_EQ(ran.out.substr(first, second - first),
              "         9\u2502                                           \u2878\u2840\n"
              "          \u2502                                           \u2847\u2847\n"
              "          \u2502                                          \u28B8 \u28B8\n"
              "          \u2502      \u2860\u2814\u2822\u2884\u2840                               "
              "\u285C \u2818\u2844\n"
              "          \u2502   \u28C0\u2814\u2809    \u2808\u2811\u2822\u2840                   "
              "        \u2880\u2807  \u2887\n"
              "         0\u2502\u2860\u2814\u280A          \u2808\u2811\u2824\u28C0              "
              "\u2812\u2812\u2812\u2812\u2802   \u2810\u2812\u281A   \u2818\u2812\u2812\n");
    EXPECT_EQ(ran.out.substr(second + of_two.size()),
              "         9\u2502\u2809\u2809\u2809\u2809\u2809\u2809\u2809\u2809\u2809\u2809\u2801\n"
              "          \u2502\n"
              "          \u2502\n"
              "          \u2502\n"
              "          \u2502\n"
              "         0\u2502\n"
              "          "
              "\u2514\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500"
              "\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500"
              "\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500"
              "\u2500\u2500\u2500\u2500\u2500\u2500\u2500\n"
              "           0          time since the start in s          23\n");
    // A part of it, by seconds and by the clock; the largest is where it was.
    for (const char* end : {"22.5", "2026-03-14 09:27:15.500"}) {
        ran = run_kov({"log", "plot", "--from", "20", "--to", end, one.name()},
                      {.columns = 60, .has_utf8 = false});
        EXPECT_THAT(ran.out, HasSubstr("         9|                     ..'''..\n"));
        EXPECT_THAT(ran.out,
                    EndsWith("           20         time since the start in s          22\n"));
    }
}

TEST(LogPlot, LabelsFitTheirAxes)
{
    const TemporaryFile file;
    const struct {
        std::vector<std::string> volts;
        const char *high, *low;
    } cases[] = {
        {{"0", "19999.99"}, "     20000|", "         0|"},
        {{"3000.001", "3000.002"}, "  3000.002|", "  3000.001|"},
        {{"-1234567.1234", "-1234567.1239"}, "-1234567.1|", "-1234567.1|"},
        {{"-1.7e308", "1.7e308"}, "  1.7e+308|", " -1.7e+308|"},
        {{"1.7976931348623157e308"}, "1.798e+308|", " 1.78e+308|"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.high);
        write_file(file.name(), recording(c.volts));
        const KovRun ran =
            run_kov({"log", "plot", file.name()}, {.columns = 60, .has_utf8 = false});
        std::vector<std::string> rows;
        std::istringstream stream{ran.out};
        for (std::string row; std::getline(stream, row);)
            rows.push_back(row);
        ASSERT_EQ(rows.size(), 10U);
        EXPECT_EQ(rows[2].substr(0, 11), c.high);
        EXPECT_EQ(rows[7].substr(0, 11), c.low);
        EXPECT_GT(rows[2].size(), 11U) << "the largest is in the top row";
    }
    write_file(file.name(), recording({"1", "2"}) + "99999.990\t\t\t1\t\t\n");
    EXPECT_THAT(run_kov({"log", "plot", file.name()}).out, EndsWith("  100000\n"));
}

TEST(LogPlot, RefusesWhatCannotBeDrawn)
{
    const TemporaryFile log, empty, none, report;
    const std::string text = recording({"1", "2", "3"});
    write_file(log.name(), text);
    write_file(empty.name(), recording({}));
    write_file(none.name(), "x\n");
    write_file(report.name(), contents(std::string{KOV_TEST_DATA} + "/expected_report.txt"));
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } cases[] = {
        {{"-o", "x.svg", log.name()}, "the package is gnuplot-nox"},
        {{"-o", "x.pdf", log.name()}, "x.pdf: a picture ends in .html, .svg or .png"},
        {{"-o", "/nowhere/x.html", log.name()}, "/nowhere/x.html: "},
        {{"-o", "/dev/full/x.html", log.name()}, "x.html: "},
        {{"--only", "Vout", log.name()}, "there is no quantity Vout; there are Width, Period, "},
        {{"--only", "x", report.name()}, "there is no quantity x; there are slot1 error, slot1 cu"},
        {{"--only", "x", log.name(), log.name()}, "Period, Voltage, Current, Phase\n"},
        {{"--from", "x", log.name()}, "a time is in seconds since the start, or as"},
        {{"--to", "2026-03-14T09:26:53.1e1", log.name()}, "a time is in seconds since the start"},
        {{"--from", "100", log.name()}, "there is nothing to draw"},
        {{"--to", "1", report.name()}, "what a report tells has no time"},
        {{empty.name()}, "there is nothing to draw"},
        {{none.name()}, ":1: this is no recording: it does not begin as one"},
        {{log.name(), report.name()}, ":1: this is no recording"},
        {{report.name(), log.name()}, ": this is no report, and the others are"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        std::vector<std::string> arguments = {"log", "plot"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const KovRun ran = run_kov(arguments);
        EXPECT_EQ(ran.status, 3) << ran.out;
        EXPECT_THAT(ran.err, HasSubstr(c.error));
    }
}

TEST(LogPlot, ReadsAgainWhatItHasRead)
{
    const TemporaryFile file;
    const std::string text = recording({"1", "2", "3"});
    write_file(file.name(), text + "7.000\t\t\t4");
    const companion::Surroundings outside{.out = {}, .err = [](std::string_view) { return true; }};
    companion::LogReader reader;
    ASSERT_TRUE(reader.open(file.name(), outside));
    EXPECT_EQ(companion::read_statistics(reader).rows, 3U);
    write_file(file.name(), text + "7.000\t\t\t4\t\t\n8.000\t\t\t5\t\t\n"); // it grows meanwhile
    reader.rewind();
    EXPECT_EQ(companion::read_statistics(reader).rows, 3U);
}

} // namespace
