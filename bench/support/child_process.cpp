#include "bench/support/child_process.h"

#include "bench/library.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

double seconds_in(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

} // namespace

Spent run(const Command& command, bool may_fail)
{
    std::vector<std::string> arguments = command.arguments;
    std::string name = "KOV-Controller";
    std::vector<char*> pointers = {name.data()};
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (command.input_file != nullptr)
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, command.input_file, O_RDONLY, 0);
    if (command.output_file != nullptr)
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, command.output_file,
                                         O_WRONLY | O_TRUNC, 0);
    const double start = now_seconds();
    pid_t child = 0;
    int status = 0;
    rusage usage = {};
    const bool started = posix_spawn(&child, command.program.c_str(), &actions, nullptr,
                                     pointers.data(), environ) == 0;
    if (started)
        wait4(child, &status, 0, &usage);
    const double seconds = now_seconds() - start;
    posix_spawn_file_actions_destroy(&actions);
    if (!started || (status != 0 && !may_fail)) {
        std::fprintf(stderr, "%s %s\n", started ? "failed:" : "cannot start",
                     command.program.c_str());
        std::exit(EXIT_FAILURE);
    }
    return {.seconds = seconds,
            .processor_seconds = seconds_in(usage.ru_utime) + seconds_in(usage.ru_stime),
            .most_memory_kib = static_cast<double>(usage.ru_maxrss)};
}

} // namespace bench
