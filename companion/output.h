/// Where the companion writes: results to standard output or a file, messages to standard error.
#pragma once

#include "frame/terminal/colors.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace companion
{

/// Exit statuses: of what was read but is not whole; of what cannot be read or written, and of
/// wrong usage.
inline constexpr int not_whole = 2, wrong_usage = 3;

/// Takes bytes; false when they cannot be written.
using Sink = std::function<bool(std::string_view)>;

/// What the outside gives to a run of the companion.
struct Surroundings {
    Sink out, err;
    bool colored = false;
    std::string today;    ///< "2027-06-30"
    int columns = 80;     ///< of the terminal
    bool has_utf8 = true; ///< the terminal takes it

    /// A line on standard error.
    void complain(std::string_view message) const { err("kov: " + std::string{message} + '\n'); }
};

/// Text in UTF-8 for standard output, buffered, with colours where they are shown, and with signs
/// of units that the terminal takes.
class Printer
{
public:
    explicit Printer(const Surroundings& outside) : outside_{outside} {}

    void print(std::string_view text);
    void print(Color color, std::string_view text);
    /// How many columns a text takes.
    [[nodiscard]] std::size_t columns_of(std::string_view text) const;
    /// Hands on what was printed. False, with one message, when something could not be written.
    [[nodiscard]] bool flush();

private:
    const Surroundings& outside_;
    bool good_ = true;
    std::string buffer_;
};

/// A file that is written piece by piece; "-" is standard output.
class TextFile
{
public:
    TextFile() = default;
    ~TextFile();
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    /// False, with a message, when it cannot be created.
    [[nodiscard]] bool open(const std::string& name, const Surroundings& outside);
    [[nodiscard]] bool is_open() const { return outside_ != nullptr; }
    void write(std::string_view text);
    /// False, with a message, when not all of it could be written.
    [[nodiscard]] bool close();

private:
    std::string name_;
    const Surroundings* outside_ = nullptr;
    std::FILE* file_ = nullptr; ///< null = standard output
    bool good_ = true;
};

/// True for a file that begins as a report of the acceptance test. What is no regular file, and
/// could make one wait for ever, counts as none.
[[nodiscard]] bool is_report_file(const std::string& name);

/// False, with a message, when the file that shall be written is one of those that are read, a
/// report or a recording: nothing shall be lost. Empty names stand for no file.
[[nodiscard]] bool may_be_written(const std::string& name, const std::vector<std::string>& read,
                                  const Surroundings& outside);
/// The same of several files, of which no two may be one.
[[nodiscard]] bool may_be_written(const std::vector<std::string>& names,
                                  const std::vector<std::string>& read,
                                  const Surroundings& outside);

/// Reads what is left of a file, to which messages give this name. False, with a message, when that
/// is not possible.
[[nodiscard]] bool read_to_end(std::FILE* file, const std::string& name,
                               const Surroundings& outside, std::string& bytes);

/// Reads a whole file, standard input for "-". False, with a message, when that is not possible.
[[nodiscard]] bool read_whole_file(const std::string& name, const Surroundings& outside,
                                   std::string& bytes);

} // namespace companion
