/// The lines of a file that may still grow.
#pragma once

#include "companion/output.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace companion
{

/// Reads a file piece by piece, as often as one likes. Of what cannot be read twice (a pipe,
/// standard input for "-") all is kept.
class LineSource
{
public:
    LineSource() = default;
    ~LineSource();
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;

    /// False, with a message, when the file cannot be read.
    [[nodiscard]] bool open(const std::string& name, const Surroundings& outside);

    static constexpr std::size_t readable_behind = 8;

    enum class Got {
        line,
        overlong, ///< one that is longer than any line should be, which is not told
        torn,     ///< bytes behind the last line end, which are not told
        end,
    };
    /// The next line, without LF or CR LF; it is good until the next call, and so are
    /// `readable_behind` bytes behind it.
    [[nodiscard]] Got next(std::string_view& line);
    /// That of the line, from 1.
    [[nodiscard]] std::int64_t number() const { return number_; }

    /// Goes back to the first line. What was read then is read again, and no more.
    void rewind();

    /// False when reading failed on the way, which has been told.
    [[nodiscard]] bool is_good() const { return good_; }

private:
    /// A line that is there as a whole.
    [[nodiscard]] bool take_line(std::string_view& line);
    [[nodiscard]] bool fill();
    void complain() const; ///< of what the system said
    [[nodiscard]] std::size_t capacity() const { return buffer_.size() - readable_behind; }

    std::string name_;
    const Surroundings* outside_ = nullptr;
    std::FILE* file_ = nullptr; ///< null = all is in the buffer
    std::vector<char> buffer_;
    std::size_t start_ = 0, end_ = 0; ///< of what is still to be read
    std::int64_t number_ = 0;
    std::uint64_t read_ = 0;          ///< bytes taken from the file
    std::uint64_t most_ = UINT64_MAX; ///< bytes to take
    bool good_ = true;
};

} // namespace companion
