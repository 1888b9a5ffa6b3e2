#include "frame/data_file.h"

#include <algorithm>
#include <utility>

#include "frame/format.h"
#include "frame/platform.h"

OutputFile::~OutputFile()
{
    if (is_open())
        (void)close();
}

bool OutputFile::create(const char* name)
{
    file_ = platform::open_file(name, "w");
    due_ms_ = 0;
    return is_open();
}

bool OutputFile::print(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool printed = print_list(format, arguments);
    va_end(arguments);
    return printed;
}

bool OutputFile::print_list(const char* format, va_list arguments)
{
    (void)std::vfprintf(file_, format, arguments);
    return std::ferror(file_) == 0;
}

bool OutputFile::write(std::string_view bytes)
{
    (void)std::fwrite(bytes.data(), 1, bytes.size(), file_);
    return std::ferror(file_) == 0;
}

bool OutputFile::flush()
{
    return std::fflush(file_) == 0 && std::ferror(file_) == 0;
}

bool OutputFile::store()
{
    return flush() && platform::store_file(file_);
}

bool OutputFile::store_when_due(std::int64_t now_ms)
{
    constexpr std::int64_t interval_ms = 1000;
    const bool due = due_ms_ != 0 && now_ms >= due_ms_;
    if (due || due_ms_ == 0)
        due_ms_ = now_ms + interval_ms;
    return due ? store() : std::ferror(file_) == 0;
}

bool OutputFile::close()
{
    const bool flushed = flush();
    return std::fclose(std::exchange(file_, nullptr)) == 0 && flushed;
}

InputFile::~InputFile()
{
    if (file_ != nullptr)
        (void)close();
}

bool InputFile::open(const char* name)
{
    file_ = platform::open_file(name, "rb");
    at_ = end_ = 0;
    return file_ != nullptr;
}

void InputFile::fill()
{
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(at_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= at_;
    at_ = 0;
    end_ += std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
}

bool InputFile::close()
{
    const bool read = std::ferror(file_) == 0;
    return std::fclose(std::exchange(file_, nullptr)) == 0 && read;
}

bool read_file(const char* name, std::string& bytes)
{
    bytes.clear();
    return read_file(name, [&bytes](std::string_view piece) {
        bytes += piece;
        return true;
    });
}

bool read_file(const char* name, const std::function<bool(std::string_view)>& take)
{
    std::FILE* file = platform::open_file(name, "rb");
    if (file == nullptr)
        return false;
    std::array<char, 16384> block;
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file)) > 0) {
        if (!take({block.data(), count}))
            break;
    }
    const bool read = std::ferror(file) == 0;
    return std::fclose(file) == 0 && read;
}

namespace
{

void print_file_error(const char* what, const char* file_name)
{
    console.print("Error %s the data file '%s'\r\n", what, printable(file_name).c_str());
}

} // namespace

void print_open_error(const char* file_name)
{
    print_file_error("opening", file_name);
}

void print_write_error(const char* file_name)
{
    print_file_error("writing", file_name);
}

void print_read_error(const char* file_name)
{
    print_file_error("reading", file_name);
}

void print_close_error(const char* file_name)
{
    print_file_error("closing", file_name);
}
