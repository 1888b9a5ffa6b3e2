#include "frame/data_file.h"

#include "frame/format.h"
#include "frame/platform/platform.h"
#include "frame/terminal/questions.h"

#include <algorithm>
#include <cerrno>
#include <utility>

OutputFile::~OutputFile()
{
    if (is_open())
        (void)close();
}

bool OutputFile::create(const char* name)
{
    file_ = platform::open_file(name, "w");
    due_ms_ = 0;
    failed_ = false;
    if (is_open())
        platform::begin_writing_file();
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
    return noted(std::ferror(file_) == 0);
}

bool OutputFile::write(std::string_view bytes)
{
    (void)std::fwrite(bytes.data(), 1, bytes.size(), file_);
    return noted(std::ferror(file_) == 0);
}

bool OutputFile::flush()
{
    return noted(std::fflush(file_) == 0 && std::ferror(file_) == 0);
}

bool OutputFile::store()
{
    return flush() && noted(platform::store_file(file_));
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
    const bool has_failed = failed_;
    const bool flushed = flush();
    const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
    platform::end_writing_file();
    return has_failed || (closed && flushed);
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
    given_up_ = false;
    return file_ != nullptr;
}

void InputFile::fill()
{
    if (given_up_)
        return;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(at_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= at_;
    at_ = 0;
    end_ += std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
    if (std::ferror(file_) != 0 && errno == EINTR) { // only a request to end the program does that
        std::clearerr(file_);
        given_up_ = true;
    }
}

bool InputFile::close()
{
    const bool read = std::ferror(file_) == 0;
    return std::fclose(std::exchange(file_, nullptr)) == 0 && read;
}

bool read_file(const char* name, const std::function<bool(std::string_view)>& take)
{
    InputFile file;
    if (!file.open(name))
        return false;
    for (bool going_on = true; going_on;) {
        const std::string_view piece = file.ahead(1);
        file.skip(piece.size());
        going_on = !piece.empty() && take(piece);
    }
    return file.close();
}

namespace
{

void print_file_error(const char* what, const char* file_name)
{
    console.print("Error %s the data file '%s'\r\n", what, printable(file_name).c_str());
}

/// A request to end the program breaks off what waits for the other end of a pipe.
void print_wait_error(const char* what, const char* file_name)
{
    if (platform::stop_signal() != 0)
        print_interrupted();
    else
        print_file_error(what, file_name);
}

} // namespace

void print_open_error(const char* file_name)
{
    print_wait_error("opening", file_name);
}

void print_write_error(const char* file_name)
{
    print_file_error("writing", file_name);
}

void print_read_error(const char* file_name)
{
    print_wait_error("reading", file_name);
}

void print_close_error(const char* file_name)
{
    print_file_error("closing", file_name);
}
