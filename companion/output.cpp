#include "companion/output.h"

#include "companion/text.h"
#include "frame/platform/platform.h"

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
    buffer_ += text;
    constexpr std::size_t much = 1 << 16;
    if (buffer_.size() > much)
        (void)flush();
}

void Printer::print(Color color, std::string_view text)
{
    if (colored_)
        print(terminal_color(color));
    print(text);
    if (colored_)
        print("\33[m");
}

bool Printer::flush()
{
    if (!buffer_.empty())
        good_ = sink_(buffer_) && good_;
    buffer_.clear();
    return good_;
}

bool told_completely(Printer& printer, const Surroundings& outside)
{
    if (printer.flush())
        return true;
    outside.complain("-: could not be written completely");
    return false;
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

bool may_be_written(const std::string& name, const std::vector<std::string>& read,
                    const Surroundings& outside)
{
    const auto path = [](const std::string& text) {
        return std::filesystem::path{std::u8string{text.begin(), text.end()}};
    };
    for (const std::string& file : read) {
        std::error_code not_there;
        if (!name.empty() && name != "-" && file != "-" &&
            std::filesystem::equivalent(path(name), path(file), not_there)) {
            outside.complain(valid_utf8(name) + ": this file is read, so it cannot be written");
            return false;
        }
    }
    return true;
}

bool read_whole_file(const std::string& name, const Surroundings& outside, std::string& bytes)
{
    bytes.clear();
    std::FILE* file = name == "-" ? stdin : platform::open_file(name.c_str(), "rb");
    if (file == nullptr) {
        outside.complain(valid_utf8(name) + ": " + std::strerror(errno));
        return false;
    }
    std::array<char, 32768> piece{};
    for (;;) {
        const std::size_t count = std::fread(piece.data(), 1, piece.size(), file);
        bytes.append(piece.data(), count);
        if (count < piece.size() || platform::stop_signal() != 0)
            break;
    }
    const bool is_good = std::ferror(file) == 0;
    if (!is_good)
        outside.complain(valid_utf8(name) + ": " + std::strerror(errno));
    if (file != stdin)
        std::fclose(file);
    return is_good;
}

} // namespace companion
