#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/child_process.h"
#include "bench/support/results.h"
#include "bench/support/set_file.h"
#include "bench/support/temporary_file.h"
#include "config/set_access.h"
#include "diagnostics/memory_image.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace bench
{

namespace
{

constexpr unsigned half = highest_set_number / 2;
constexpr std::uint32_t memory_size = 0x40000;

// ---- The library calls of the commands alone. False when one failed. ----

using BareLoop = bool (*)();

bool read_sets()
{
    bool good = true;
    for (unsigned number = 1; number <= highest_set_number; ++number) {
        SetFlags flags;
        ConfigName name;
        ConfigRecord record;
        good = good && !attempt_get_flags(number, flags) && !attempt_get_name(number, name) &&
               !attempt(LIB(GetConfigData), set_index(number), &record);
        benchmark::DoNotOptimize(record);
    }
    return good;
}

bool write_sets()
{
    const ConfigName name = config_name("a set");
    const ConfigRecord record = {};
    bool good = true;
    for (unsigned number = 1; number <= highest_set_number; ++number)
        good = good && !attempt_set_name(number, name) &&
               !attempt(LIB(SetConfigData), set_index(number), &record) &&
               !attempt_set_flags(number, {.active = 1, .valid = 1});
    return good;
}

bool read_memory()
{
    MemoryBlock block;
    bool good = true;
    for (std::uint32_t address = 0; address < memory_size; address += memory_block_size)
        good = good && !attempt(LIB(GetMemoryData), address, memory_block_size, &block);
    benchmark::DoNotOptimize(block);
    return good;
}

bool write_memory()
{
    const MemoryBlock block = {};
    const std::uint8_t* const data = block.data();
    bool good = true;
    for (std::uint32_t address = 0; address < memory_size; address += memory_block_size)
        good = good && !attempt(LIB(SetMemoryData), address, memory_block_size, data);
    return good && !attempt(LIB(UpdateMemoryData));
}

double seconds_of(BareLoop loop)
{
    const double start = thread_seconds();
    if (!loop()) {
        std::fprintf(stderr, "a library call failed\n");
        std::exit(EXIT_FAILURE);
    }
    return thread_seconds() - start;
}

// ---- The commands ----

using Arguments = std::vector<std::string>;

/// The program with an instrument of its own, which answers at once and is kept nowhere.
class Program
{
public:
    Program()
    {
        scenario_.write("latency 0\n");
        answers_.write(std::string(std::size_t{2} * (repetitions + 1), 'y'));
        setenv("KOV_SIMULATOR_SCENARIO", scenario_.name().c_str(), 1);
        setenv("KOV_SIMULATOR_STATE", "none", 1);
    }
    ~Program()
    {
        unsetenv("KOV_SIMULATOR_SCENARIO");
        unsetenv("KOV_SIMULATOR_STATE");
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Processor time of a command that comes behind others, without the program's start and end: a
    /// command line that repeats it, less one that does not.
    [[nodiscard]] double seconds_of(const Arguments& others, const Arguments& command) const
    {
        const double once = run(others, command, 1);
        return (run(others, command, repetitions + 1) - once) / repetitions;
    }

private:
    static constexpr int repetitions = 20;

    [[nodiscard]] double run(const Arguments& others, const Arguments& command, int times) const
    {
        Arguments arguments = {"1"};
        arguments.insert(arguments.end(), others.begin(), others.end());
        for (int i = 0; i < times; ++i)
            arguments.insert(arguments.end(), command.begin(), command.end());
        arguments.emplace_back("-T");
        return bench::run({.program = KOV_PROGRAM,
                           .arguments = arguments,
                           .input_file = answers_.name().c_str(),
                           .output_file = nowhere})
            .processor_seconds;
    }

    TemporaryFile scenario_;
    TemporaryFile answers_;
};

struct Transfer {
    const char* name;
    BareLoop bare_loop;
    const char* command;
    const char* preparation; ///< the command without which there is nothing to move; may be null
};

constexpr Transfer saving_sets = {"saving 1023 sets", read_sets, "-XS", "-XL"};
constexpr Transfer loading_sets = {"loading 1023 sets", write_sets, "-XL", nullptr};
constexpr Transfer saving_memory = {"saving the memory", read_memory, "-y", nullptr};
constexpr Transfer loading_memory = {"loading the memory", write_memory, "-Y", "-y"};

/// Processor time of a transfer. What is loaded comes from the file, what is saved goes to another
/// one.
double seconds_of(const Program& program, const Transfer& transfer, const TemporaryFile& sets)
{
    const TemporaryFile other;
    const auto with_file = [&](const char* letters) {
        const bool loads_sets = letters == std::string_view{"-XL"};
        return Arguments{letters, loads_sets ? sets.name() : other.name()};
    };
    const Arguments before =
        transfer.preparation != nullptr ? with_file(transfer.preparation) : Arguments{};
    return program.seconds_of(before, with_file(transfer.command));
}

/// The command against its library calls.
void compare(benchmark::State& state, const Transfer& transfer)
{
    const Program program;
    const TemporaryFile sets;
    sets.write(file_of_sets(highest_set_number));
    std::vector<double> commands, loops;
    for (auto _ : state) {
        loops.push_back(seconds_of(transfer.bare_loop));
        commands.push_back(seconds_of(program, transfer, sets));
        state.SetIterationTime(commands.back());
    }
    const double ratio = median(commands) / median(loops);
    state.counters["library_us"] = median(loops) * 1e6;
    state.counters["ratio"] = ratio;
    note_result(transfer.name + std::string{" / library calls"}, ratio, no_goal);
}

/// All sets against half of them.
void compare_with_half(benchmark::State& state, const Transfer& transfer)
{
    const Program program;
    const TemporaryFile all, some;
    all.write(file_of_sets(highest_set_number));
    some.write(file_of_sets(half));
    std::vector<double> of_all, of_some;
    for (auto _ : state) {
        of_some.push_back(seconds_of(program, transfer, some));
        of_all.push_back(seconds_of(program, transfer, all));
        state.SetIterationTime(of_all.back());
    }
    const double ratio = median(of_all) / median(of_some);
    state.counters["ratio"] = ratio;
    note_result(transfer.name + std::string{" / 511 sets"}, ratio, at_most(2.5));
}

using Measure = void (*)(benchmark::State&, const Transfer&);

void add(const char* against, Measure measure, const Transfer& transfer)
{
    benchmark::RegisterBenchmark((transfer.name + std::string{against}).c_str(),
                                 [=](benchmark::State& state) { measure(state, transfer); })
        ->Iterations(15)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void register_device_transfers()
{
    for (const Transfer& transfer : {saving_sets, loading_sets, saving_memory, loading_memory})
        add(" / library calls", compare, transfer);
    for (const Transfer& transfer : {saving_sets, loading_sets})
        add(" / 511 sets", compare_with_half, transfer);
}

} // namespace bench
