#include "frame/platform/platform.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform
{

namespace
{

/// A file without a name.
class NamelessFile
{
public:
    NamelessFile() = default;
    ~NamelessFile()
    {
        if (file_ != nullptr)
            std::fclose(file_);
    }
    NamelessFile(const NamelessFile&) = delete;
    NamelessFile& operator=(const NamelessFile&) = delete;

    [[nodiscard]] bool is_open() const { return file_ != nullptr; }
    [[nodiscard]] int descriptor() const { return fileno(file_); }

    [[nodiscard]] bool write(std::string_view bytes)
    {
        const bool good = std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size() &&
                          std::fflush(file_) == 0;
        std::rewind(file_);
        return good;
    }
    [[nodiscard]] std::string text()
    {
        std::string text;
        std::array<char, 16384> piece{};
        std::rewind(file_);
        while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file_))
            text.append(piece.data(), count);
        return text;
    }

private:
    std::FILE* file_ = std::tmpfile();
};

} // namespace

ProgramRun run_program(const std::vector<std::string>& arguments, std::string_view input)
{
    ProgramRun run{.was_found = true, .status = -1};
    // Files rather than pipes: nobody waits for anybody.
    NamelessFile in, out, errors;
    if (!in.is_open() || !out.is_open() || !errors.is_open() || !in.write(input)) {
        run.errors = "no temporary file could be written";
        return run;
    }
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions = {};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.descriptor(), STDERR_FILENO);
    pid_t child = 0;
    const int failed =
        posix_spawnp(&child, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) {
        run.was_found = failed != ENOENT && failed != EACCES;
        return run;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        ;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.output = out.text();
    run.errors = errors.text();
    return run;
}

} // namespace platform
