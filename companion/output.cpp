#include "companion/output.h"

#include "companion/text.h"
#include "frame/platform/platform.h"
#include "instrument/recordings.h"
#include "protocol/report/report_texts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

namespace companion
{

namespace
{

/// What a colour is on a terminal, as the utility has them.
const char* terminal_color(Color color)
{
    switch (color) {
    case Color::good:
        return "\33[1;32m";
    case Color::bad:
        return "\33[1;35m";
    case Color::warning:
        return "\33[1;33m";
    case Color::value:
        return "\33[1m";
    default:
        return "\33[m";
    }
}

} // namespace

void Printer::print(std::string_view text)
{
    if (outside_.has_utf8)
        buffer_ += text;
    else
        buffer_ += plain_signs(text);
    constexpr std::size_t much = 1 << 16;
    if (buffer_.size() > much)
        (void)flush();
}

void Printer::print(Color color, std::string_view text)
{
    if (outside_.colored)
        print(terminal_color(color));
    print(text);
    if (outside_.colored)
        print("\33[m");
}

std::size_t Printer::columns_of(std::string_view text) const
{
    const std::string shown = outside_.has_utf8 ? std::string{text} : plain_signs(text);
    return static_cast<std::size_t>(std::count_if(shown.begin(), shown.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80; // the begin of a character
    }));
}

bool Printer::flush()
{
    const bool is_taken = buffer_.empty() || outside_.out(buffer_);
    buffer_.clear();
    if (!is_taken && std::exchange(good_, false) && platform::stop_signal() == 0)
        outside_.complain("-: could not be written completely");
    return good_;
}

TextFile::~TextFile()
{
    if (file_ != nullptr)
        std::fclose(file_);
}

bool TextFile::open(const std::string& name, const Surroundings& outside)
{
    name_ = name;
    if (name != "-") {
        file_ = platform::open_file(name.c_str(), "wb");
        if (file_ == nullptr) {
            outside.complain(valid_utf8(name) + ": " + std::strerror(errno));
            return false;
        }
    }
    outside_ = &outside;
    return true;
}

void TextFile::write(std::string_view text)
{
    if (file_ == nullptr)
        good_ = outside_->out(text) && good_;
    else
        good_ = std::fwrite(text.data(), 1, text.size(), file_) == text.size() && good_;
}

bool TextFile::close()
{
    if (!is_open())
        return true;
    if (file_ != nullptr && std::fclose(std::exchange(file_, nullptr)) != 0)
        good_ = false;
    if (!good_)
        outside_->complain(valid_utf8(name_) + ": could not be written completely");
    outside_ = nullptr;
    return good_;
}

namespace
{

std::filesystem::path path_of(const std::string& name)
{
    return std::u8string{name.begin(), name.end()};
}

/// Also of files that are not there yet.
bool is_same_file(const std::string& one, const std::string& other)
{
    if (one == "-" || other == "-")
        return one == other;
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::equivalent(path_of(one), path_of(other), error))
        return true;
    const fs::path whole = fs::weakly_canonical(fs::absolute(path_of(one), error), error);
    const fs::path other_whole = fs::weakly_canonical(fs::absolute(path_of(other), error), error);
    return !whole.empty() && whole == other_whole;
}

/// The first bytes of a regular file; others could wait for ever.
std::string begin_of(const std::string& name)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path_of(name), error))
        return {};
    std::FILE* file = platform::open_file(name.c_str(), "rb");
    if (file == nullptr)
        return {};
    std::string begin(64, '\0');
    begin.resize(std::fread(begin.data(), 1, begin.size(), file));
    std::fclose(file);
    return begin;
}

bool is_recording_file(const std::string& name)
{
    const std::string begin = begin_of(name);
    return std::any_of(std::begin(recording::formats), std::end(recording::formats),
                       [&](const MeasurementFormat* format) {
                           return begin.starts_with(std::string{format->what} + ":\t");
                       });
}

} // namespace

bool is_report_file(const std::string& name)
{
    return begin_of(name).starts_with(report_text::created_on);
}

bool may_be_written(const std::string& name, const std::vector<std::string>& read,
                    const Surroundings& outside)
{
    if (name.empty() || name == "-")
        return true;
    const bool is_read = std::any_of(read.begin(), read.end(), [&](const std::string& file) {
        return !file.empty() && file != "-" && is_same_file(name, file);
    });
    if (is_read)
        outside.complain(valid_utf8(name) + ": this file is read, so it cannot be written");
    else if (is_report_file(name))
        outside.complain(valid_utf8(name) + ": this is a report, so it is not overwritten");
    else if (is_recording_file(name))
        outside.complain(valid_utf8(name) + ": this is a recording, so it is not overwritten");
    else
        return true;
    return false;
}

bool may_be_written(const std::vector<std::string>& names, const std::vector<std::string>& read,
                    const Surroundings& outside)
{
    for (auto name = names.begin(); name != names.end(); ++name) {
        if (!may_be_written(*name, read, outside))
            return false;
        const bool is_twice = std::any_of(names.begin(), name, [&](const std::string& before) {
            return !name->empty() && !before.empty() && is_same_file(*name, before);
        });
        if (is_twice) {
            outside.complain(valid_utf8(*name) + ": two outputs cannot be written to one file");
            return false;
        }
    }
    return true;
}

bool read_to_end(std::FILE* file, const std::string& name, const Surroundings& outside,
                 std::string& bytes)
{
    std::array<char, 32768> piece;
    for (;;) {
        const std::size_t count = std::fread(piece.data(), 1, piece.size(), file);
        bytes.append(piece.data(), count);
        if (count < piece.size() || platform::stop_signal() != 0)
            break;
    }
    if (std::ferror(file) == 0)
        return true;
    outside.complain(valid_utf8(name) + ": " + std::strerror(errno));
    return false;
}

bool read_whole_file(const std::string& name, const Surroundings& outside, std::string& bytes)
{
    bytes.clear();
    std::FILE* file = name == "-" ? stdin : platform::open_file(name.c_str(), "rb");
    if (file == nullptr) {
        outside.complain(valid_utf8(name) + ": " + std::strerror(errno));
        return false;
    }
    const bool is_good = read_to_end(file, name, outside, bytes);
    if (file != stdin)
        std::fclose(file);
    return is_good;
}

} // namespace companion
