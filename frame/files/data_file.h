/// The text files that commands write and read: one way to open them, to notice that the disk is
/// full, and to tell the user.
#pragma once

#include "frame/terminal/console.h"
#include "frame/text/printf_format.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

/// What a file held that is written anew: a copy beside it, named NAME~, for as long as the new
/// one is not complete. (It is a copy, and the file itself is written, so that its links, its owner
/// and its permissions stay as they are.) Nothing that somebody else named so is overwritten: a
/// name that is taken gets a number behind it. One that would be too long loses its end. When the
/// next new one fails, too, what is kept is still the last complete one.
class FormerFile
{
public:
    FormerFile() = default;
    /// Tells the user, in a line, where the copy is, if there still is one; or that there could be
    /// none.
    ~FormerFile();
    FormerFile(const FormerFile&) = delete;
    FormerFile& operator=(const FormerFile&) = delete;

    /// False when the file of that name holds something that cannot be copied.
    [[nodiscard]] bool keep(const char* name);
    /// The new file was not begun: removes the copy, unless it is older than that.
    void undo();
    /// The new file is complete: removes the copy.
    void discard();
    /// The new file is given up, although somebody may still be writing it: tells the user, as the
    /// destructor would. From then on the copy is not removed.
    void tell();
    /// Where the copy is, as the user is told; empty when there is none.
    [[nodiscard]] std::string notice() const;
    /// The new file has come to nothing.
    void mark() const;

private:
    std::string name_;
    std::string copy_;    ///< empty = none
    bool is_new_ = false; ///< made by keep()
    bool failed_ = false;
    std::atomic<bool> settled_ = false; ///< removed or told
};

/// A file being written. Its bytes are buffered; what fails to reach the disk is told by the print
/// that notices it, at the latest by close().
class OutputFile
{
public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Creates the file, or empties the one of that name. False when that is not possible. Tells
    /// the user when it is a pipe that has to wait for its reader.
    [[nodiscard]] bool create(const char* name);
    /// The same, but what a file of that name holds is kept until complete(); false, too, when it
    /// cannot be.
    [[nodiscard]] bool replace(const char* name);
    [[nodiscard]] bool is_open() const { return file_ != nullptr; }

    /// False when this or an earlier print could not be written.
    [[nodiscard]] bool print(const char* format, ...) PRINTF_FORMAT(2, 3);
    [[nodiscard]] bool print_list(const char* format, va_list arguments) PRINTF_FORMAT(2, 0);
    [[nodiscard]] bool write(std::string_view bytes);

    /// Hands everything printed so far to the operating system.
    [[nodiscard]] bool flush();
    /// The same, and waits until it is on the disk: neither a crash nor a power loss costs it.
    /// False, too, when somebody has removed or renamed the file meanwhile.
    [[nodiscard]] bool store();
    /// The same once a second, from the first call on: for a file that grows while something is
    /// measured. It may be renamed.
    [[nodiscard]] bool store_when_due(std::int64_t now_ms);

    /// False when the rest could not be written or the file not be closed; not because of a failure
    /// that was told before. The file is closed anyway.
    [[nodiscard]] bool close();
    /// The same for a file in which nothing is missing: it is stored before, and the one that it
    /// replaces is let go.
    [[nodiscard]] bool complete();

    /// What it replaces, if replace() opened it.
    [[nodiscard]] FormerFile& former() { return former_; }

private:
    bool noted(bool good)
    {
        failed_ = failed_ || !good;
        return good;
    }

    [[nodiscard]] bool sync();

    std::FILE* file_ = nullptr;
    std::string name_;
    FormerFile former_;
    bool failed_ = false;
    std::int64_t due_ms_ = 0; ///< of store_when_due()
};

/// A file being read piece by piece, however long it is.
class InputFile
{
public:
    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// False when the file cannot be opened. A folder can, but not be read. Tells the user when it
    /// is a pipe into which nobody writes for a while.
    [[nodiscard]] bool open(const char* name);

    /// The next bytes, which stay: at least `count` of them (no more than 64), unless the
    /// file ends before or cannot be read any further, or a request to end the program comes while
    /// a pipe is waited for. Valid until the next call.
    [[nodiscard]] std::string_view ahead(std::size_t count)
    {
        if (end_ - at_ < count)
            fill();
        return {buffer_.data() + at_, end_ - at_};
    }
    /// Takes bytes that were seen ahead.
    void skip(std::size_t count) { at_ += count; }

    /// False when something could not be read. The file is closed anyway.
    [[nodiscard]] bool close();

private:
    void fill();

    std::FILE* file_ = nullptr;
    bool given_up_ = false;        ///< the program was asked to end while it waited for a pipe
    std::size_t at_ = 0, end_ = 0; ///< the part of the buffer that is still to be taken
    std::array<char, 16384> buffer_;
};

/// Reads a file piece by piece, so that it may be larger than the memory, until `take` returns
/// false. False when it cannot be opened or read; a folder cannot.
[[nodiscard]] bool read_file(const char* name, const std::function<bool(std::string_view)>& take);

// What the user is told; control characters in the name are escaped. Each ends its line. When the
// program is asked to end, opening and reading were not in error but "interrupted".
void print_open_error(const char* file_name);
void print_write_error(const char* file_name);
void print_read_error(const char* file_name);
void print_close_error(const char* file_name);
