/// What a journal needs of the operating system, in the companion and in the two libraries. Texts
/// are UTF-8.
#pragma once

#include "companion/journal/recorder.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace journal::host
{

[[nodiscard]] const Clock& clock();

[[nodiscard]] std::uint64_t process_id();

/// An environment variable; nothing where it is not set or empty.
[[nodiscard]] std::optional<std::string> environment(const char* name);

/// Of this process, the program's name first.
[[nodiscard]] std::vector<std::string> command_line();

/// Whether both are names of one file that is there.
[[nodiscard]] bool is_same_file(const std::string& one, const std::string& other);

/// The file that holds this code: one of our libraries, or the companion.
[[nodiscard]] std::string own_file();

[[nodiscard]] std::FILE* open_to_read(const std::string& name);

/// Writes a line to standard error.
void tell(std::string_view line);

[[nodiscard]] bool error_output_is_terminal();

/// A journal being written. It disturbs the program in which it is open in nothing: its descriptor
/// is none that somebody waits for, its failures raise no signals, and it never waits for a reader.
class OutputFile
{
public:
    enum class Opening {
        replace, ///< empties what is there
        create,  ///< there must be nothing
        go_on,   ///< there must be a file of `expected_size`; what is no file may hold anything
    };

    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// False, with the reason in `problem()`, when that is not possible, or when another process
    /// writes the file.
    [[nodiscard]] bool open(const std::string& name, Opening opening,
                            std::uint64_t expected_size = 0);
    /// Appends bytes. False, with the reason in `problem()`, when not all of them went.
    [[nodiscard]] bool write(std::string_view bytes);
    void close();

    [[nodiscard]] const std::string& problem() const { return problem_; }

private:
    [[nodiscard]] bool is_ours() const;

    std::string name_, problem_;
    std::intptr_t handle_ = -1;
    std::uint64_t device_ = 0, inode_ = 0;
};

} // namespace journal::host
