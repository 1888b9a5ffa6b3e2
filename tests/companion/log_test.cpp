#include "companion/log/statistics.h"
#include "tests/companion/companion_trial.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace
{

const std::string heading = "Operating parameters of:\tHV-supply 1\n"
                            "Data acquisition started on:\tSat, 03/14/2026, 09:26:53\n\n"
                            "Time/s\tWidth/ns\tPeriod/ns\tVoltage/V\tCurrent/nA\tPhase/ns\n";
const std::string trailer = "\nData acquisition stopped\n"
                            "Total duration in s:\t70.000\n"
                            "Mean polling rate in cycles/s:\t100.000000\n"
                            "Mean response time in ms:\t10.000000\n";

/// What the heat-controller's recording holds after some seconds.
std::string heat_controller_recording(const Scenario& lines)
{
    const TemporaryFile file;
    Trial trial{"latency 10", "noise on"};
    for (const std::string& line : lines)
        trial.instrument(line);
    trial.type(30'000, "\033");
    trial.run("3 -q -HS " + file.name() + " -T");
    return file.text();
}

std::string tuning_recording()
{
    const TemporaryFolder folder;
    Trial trial{"latency 10", "noise on"};
    trial.type(500, "A\033[5;5~"); // on, to 1000 V
    trial.type(1000, "S");
    trial.type(20'000, "\033");
    trial.run("3 -q -VT1 -T");
    return contents(std::filesystem::directory_iterator { "." } -> path().string());
}

KovRun run_log(const char* command, const std::string& text)
{
    const TemporaryFile file;
    write_file(file.name(), text);
    KovRun ran = run_kov({"log", command, file.name()});
    for (std::string* said : {&ran.out, &ran.err}) {
        for (std::size_t at = 0; (at = said->find(file.name())) != std::string::npos;)
            said->replace(at, file.name().size(), "FILE");
    }
    return ran;
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream{text};
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

/// With CR LF, as on Windows.
std::string with_carriage_returns(const std::string& text)
{
    std::string changed;
    for (const char c : text)
        changed += c == '\n' ? "\r\n" : std::string{c};
    return changed;
}

TEST(Log, TableHoldsEveryValueOfRealRecordings)
{
    for (const std::string& log :
         {heat_controller_recording({}), tuning_recording(),
          with_carriage_returns(heat_controller_recording({"heater.ambient -20"}))}) {
        const KovRun ran = run_log("csv", log);
        EXPECT_EQ(ran.status, 0) << ran.err;
        const std::vector<std::string> table = split(ran.out, '\n');
        std::vector<std::string> rows = split(log.substr(0, log.find("\nData acq", 80)), '\n');
        rows.erase(rows.begin(), rows.begin() + 3);
        std::erase(rows, "\r");
        ASSERT_EQ(table.size(), rows.size());
        ASSERT_GT(rows.size(), 50U);
        const int first_second = std::stoi(log.substr(log.find("09:26:") + 6, 2));
        const std::size_t columns = split(table.front(), ',').size();
        for (std::size_t i = 1; i < table.size(); ++i) {
            std::erase(rows[i], '\r');
            std::vector<std::string> cells = split(table[i] + ',', ','),
                                     wanted = split(rows[i], '\t');
            int minute = 0, second = 0, millisecond = 0;
            ASSERT_EQ(std::sscanf(cells.front().c_str(), "2026-03-14T09:%d:%d.%d", &minute, &second,
                                  &millisecond),
                      3);
            EXPECT_EQ((minute - 26) * 60'000 + (second - first_second) * 1000 + millisecond,
                      std::lround(std::stod(wanted[0]) * 1000));
            EXPECT_EQ(cells.size(), columns);
            cells.erase(cells.begin());
            wanted.resize(cells.size());
            EXPECT_EQ(cells, wanted);
        }
    }
}

TEST(Log, TellsWhatIsNotWholeAndRefusesWhatIsNoLog)
{
    const std::string row = "0.010\t1\t2\t3\t\t4\n";
    const std::string whole = heading + row + trailer;
    const struct {
        std::string text;
        int stats, csv;
        const char* error; ///< a part of it; empty = none
    } cases[] = {
        {whole, 0, 0, ""},
        {with_carriage_returns(whole), 0, 0, ""},
        {whole + "\n\r\n", 0, 0, ""},
        {heading + trailer, 0, 0, ""},
        {heading, 2, 0, ""},
        {heading + row, 2, 0, ""},
        {heading + row + "0.020\t1\t2\t3", 2, 0, "FILE:6: the last line is torn and left out"},
        {heading + row + "\nData acquisition stopped\nTotal duration in s:\t1.000\n", 2, 0, ""},
        {whole.substr(0, whole.size() - 1), 2, 0, "FILE:10: the last line is torn"},
        {heading + "0.010\tx\n" + row + "1\t2\t3\t4\t5\t6\t7\n\x01\n" + trailer, 2, 2,
         "FILE:5: this line makes no sense; it and 2 more such are left out"},
        {heading + std::string(300'000, '1') + '\n' + row + "x\n" + trailer, 2, 2,
         "FILE:5: this line makes no sense; it and 1 more"},
        {heading + "nan\t1\n" + trailer, 2, 2, "FILE:5: this line makes no sense and"},
        {heading + "1e300\t1\n" + trailer, 2, 2, "FILE:5: this line makes no sense and"},
        {"", 3, 3, "FILE:0: this is no recording: it is empty"},
        {"x\n", 3, 3, "FILE:1: this is no recording: it does not begin as one"},
        {std::string(300'000, '\0') + '\n', 3, 3, "FILE:1: this is no recording: this line is"},
        {heading.substr(0, 40), 3, 3, "FILE:2: this is no recording: it ends within this line"},
        {heading.substr(0, heading.find("Time")), 3, 3, "FILE:3: this is no recording: it ends"},
        {"Operating parameters of:\tx\nData acquisition started on:\tSat, 02/31/2026, 09:26:53\n",
         3, 3, "FILE:2: this is no recording: the time of its begin"},
        {heading.substr(0, heading.size() - 4) + "us\n", 3, 3, "FILE:4: this is no recording: the"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 600));
        const KovRun stats = run_log("stats", c.text), csv = run_log("csv", c.text);
        EXPECT_EQ(stats.status, c.stats) << stats.out;
        EXPECT_EQ(csv.status, c.csv);
        EXPECT_THAT(stats.err, HasSubstr(c.error));
        EXPECT_THAT(csv.err, HasSubstr(c.error));
        EXPECT_EQ(csv.err.empty(), *c.error == '\0') << csv.err;
        EXPECT_EQ(stats.out.find("no trailer") != std::string::npos, c.stats == 2 && c.csv == 0)
            << stats.out;
    }
    EXPECT_EQ(run_kov({"log", "stats", "no-such-file"}).status, 3);
    const TemporaryFile itself, other;
    write_file(itself.name(), whole);
    write_file(other.name(), heat_controller_recording({}));
    const std::string before = other.text();
    EXPECT_EQ(run_kov({"log", "csv", "-o", itself.name(), itself.name()}).status, 3);
    EXPECT_EQ(run_kov({"log", "csv", "-o", other.name(), itself.name()}).status, 3);
    EXPECT_EQ(itself.text(), whole) << "a recording must not be written over";
    EXPECT_EQ(other.text(), before) << "nor must another one";
}

TEST(Log, StatisticsOfARecording)
{
    std::string text = heading;
    // 1 V each second for a minute, after a gap of 9 s; the current is measured three times.
    for (int i = 0; i < 60; ++i) {
        const int second = i < 30 ? i : i + 8;
        text += std::to_string(second) + ".000\t-0.5\t20000\t" + std::to_string(second % 2 + 2998) +
                ".5\t\t0\n";
        if (i % 20 == 0)
            text += std::to_string(second) + ".000\t-0.5\tnan\t\t" + std::to_string(i) + "\t0\n";
    }
    const KovRun ran = run_log("stats", text + trailer);
    EXPECT_EQ(ran.status, 0);
    const std::size_t title = ran.out.find('\n') + 1;
    EXPECT_EQ(ran.out.substr(0, title), "FILE: Operating parameters of HV-supply 1\n");
    EXPECT_THAT(ran.out, HasSubstr("  2026-03-14T09:26:53.000"));
    EXPECT_THAT(ran.out, HasSubstr(", 0:01:10.000, 63 rows\n"));
    EXPECT_EQ(ran.out.substr(ran.out.find('\n', title) + 1),
              "              count   mean  spread  smallest  largest    drift/h     gaps\n"
              "  Width/ns       63   -0.5       0      -0.5     -0.5         +0  1 (9 s)\n"
              "  Period/ns      60  20000       0     20000    20000         +0  1 (9 s)\n"
              "  Voltage/V      60   2999   0.504    2998.5   2999.5      +2.06  1 (9 s)\n"
              "  Current/nA      3     20      20         0       40  +2.97e+03        0\n"
              "  Phase/ns       63      0       0         0        0         +0  1 (9 s)\n"
              "  Period was no finite number: 3\n");
    // Rows in pairs make no gaps, and what cannot be summed up has no mean.
    text = heading;
    for (int tenth = 10; tenth < 60; ++tenth) {
        const std::string time = std::to_string(tenth / 10) + '.' + std::to_string(tenth % 10);
        text += time + "00\t-1.7e308\t1\n" + time + "00\t1.7e308\n" + time + "01\t1\t1\n";
    }
    EXPECT_THAT(
        run_log("stats", text + trailer).out,
        AllOf(HasSubstr("  Width/ns      150     -       -  -1.7e+308  1.7e+308        -     0"),
              HasSubstr("  Period/ns     100     1       0          1         1       +0     0")));
    EXPECT_THAT(
        run_log("stats", heat_controller_recording({"fail GetHeatCtrlMonitoring at 5"})).out,
        EndsWith("  Monitoring communication error: 1\n"));
}

TEST(Log, AGapIsFiveTimesTheUsualInterval)
{
    companion::Intervals intervals;
    for (const int milliseconds : {1000, 1000, 1000, 1000, 1000, 4500, 5500})
        intervals.take(milliseconds);
    EXPECT_EQ(intervals.gaps(), 1U);
}

TEST(Log, NumbersAreReadToTheLastBit)
{
    std::vector<std::string> texts = {"0",
                                      "-0",
                                      "123456789012345",
                                      "99999999999999999999",
                                      "1e22",
                                      "-inf",
                                      "0.12345678901234567890",
                                      "5e-324",
                                      ".5",
                                      "7.",
                                      "-nan"};
    const std::string digits = "904871236590718";
    for (std::size_t whole = 1; whole < 11; ++whole) {
        for (std::size_t decimals = 0; decimals < digits.size(); ++decimals)
            texts.push_back((decimals % 2 == 0 ? "-" : "") + digits.substr(decimals % 4, whole) +
                            '.' + digits.substr(digits.size() - decimals));
    }
    const std::vector<std::string> wrong = {"-",    ".",   "-.", "1.2.3", "1 ",   " 1",
                                            "0x10", "1,5", "+1", "1e999", "1.2x", "12345678\xB0"};
    const TemporaryFile file;
    std::string bytes = heading;
    for (const std::string& text : texts)
        bytes += "0.001\t" + text + "\t\t\t\t" + text + '\n';
    for (const std::string& text : wrong)
        bytes += "0.001\t" + text + "\t\n0.001\t\t\t\t\t" + text + "\n" + text + "\t1\n";
    write_file(file.name(), bytes);
    companion::Surroundings outside;
    outside.out = outside.err = [](std::string_view) { return true; };
    companion::LogReader reader;
    ASSERT_TRUE(reader.open(file.name(), outside));
    companion::Row row;
    const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
    for (const std::string& text : texts) {
        ASSERT_TRUE(reader.next(row)) << text;
        EXPECT_EQ(bits(row.cells[0].value), bits(std::strtod(text.c_str(), nullptr))) << text;
        EXPECT_EQ(bits(row.cells[4].value), bits(row.cells[0].value)) << text;
    }
    EXPECT_FALSE(reader.next(row));
    EXPECT_EQ(reader.end().damaged_lines, std::ssize(wrong) * 3);
}

} // namespace
