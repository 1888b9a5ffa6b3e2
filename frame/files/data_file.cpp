#include "frame/files/data_file.h"

#include "frame/platform/platform.h"
#include "frame/terminal/questions.h"
#include "frame/text/format.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace
{

/// Takes the last character off a file's name; false when nothing would be left of it.
bool shorten(std::string& path)
{
    const auto is_inside_character = [](char byte) { return (byte & 0xC0) == 0x80; }; // of UTF-8
    std::size_t end = path.size();
    while (end > 0 && is_inside_character(path[end - 1]))
        --end;
    end -= end > 0 ? 1 : 0;
    path.resize(end);
    return !path.empty() && path.back() != '/' && path.back() != '\\';
}

void tell_wait(const char* what, const char* name)
{
    console.clear_line(); // of a progress text
    print_warning("Waiting for somebody to %s the pipe '%s'; Ctrl-C gives it up", what,
                  printable(name).c_str());
    console.flush();
}

void tell_wait_for_reader(const char* name)
{
    tell_wait("read", name);
}

void tell_wait_for_writer(const char* name)
{
    tell_wait("write into", name);
}

} // namespace

bool FormerFile::keep(const char* name)
{
    constexpr unsigned most_copies = 99;
    std::string beginning = name_ = name;
    for (unsigned number = 1; number <= most_copies;) {
        copy_ = beginning + '~' + (number > 1 ? std::to_string(number) : "");
        switch (platform::copy_file(name, copy_.c_str())) {
        case platform::Copied::yes:
            is_new_ = true;
            return true;
        case platform::Copied::already:
            return true;
        case platform::Copied::nothing:
            copy_.clear();
            return true;
        case platform::Copied::name_taken:
            ++number;
            break;
        case platform::Copied::name_too_long:
            if (shorten(beginning))
                break;
            [[fallthrough]];
        case platform::Copied::no:
            failed_ = true;
            return false;
        }
    }
    failed_ = true;
    return false;
}

void FormerFile::undo()
{
    if (is_new_)
        discard();
}

void FormerFile::discard()
{
    if (!settled_.exchange(true) && !copy_.empty())
        platform::remove_file(copy_.c_str());
}

std::string FormerFile::notice() const
{
    return copy_.empty() ? "" : "The file before is kept as '" + printable(copy_) + '\'';
}

void FormerFile::tell()
{
    if (settled_.exchange(true) || copy_.empty())
        return;
    if (failed_)
        print_warning("The file before cannot be kept as '%s', so it was left as it is",
                      printable(copy_).c_str());
    else
        print_warning("%s", notice().c_str());
}

void FormerFile::mark() const
{
    if (!failed_ && !settled_ && !copy_.empty())
        platform::mark_copy(name_.c_str(), copy_.c_str());
}

FormerFile::~FormerFile()
{
    mark();
    tell();
}

OutputFile::~OutputFile()
{
    if (is_open())
        (void)close();
}

bool OutputFile::create(const char* name)
{
    file_ = platform::open_file(name, "w", tell_wait_for_reader);
    name_ = name;
    due_ms_ = 0;
    failed_ = false;
    if (is_open())
        platform::begin_writing_file();
    return is_open();
}

bool OutputFile::replace(const char* name)
{
    if (!former_.keep(name))
        return false;
    if (!create(name))
        former_.undo();
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

bool OutputFile::sync()
{
    return flush() && noted(platform::store_file(file_));
}

bool OutputFile::store()
{
    return sync() &&
           noted(platform::place_of_file(file_, name_.c_str()) == platform::FilePlace::there);
}

bool OutputFile::store_when_due(std::int64_t now_ms)
{
    constexpr std::int64_t interval_ms = 1000;
    const bool due = due_ms_ != 0 && now_ms >= due_ms_;
    if (due || due_ms_ == 0)
        due_ms_ = now_ms + interval_ms;
    if (!due)
        return std::ferror(file_) == 0;
    return sync() &&
           noted(platform::place_of_file(file_, name_.c_str()) != platform::FilePlace::nowhere);
}

bool OutputFile::close()
{
    const bool has_failed = failed_;
    const bool flushed = flush();
    const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
    platform::end_writing_file();
    return has_failed || (closed && flushed);
}

bool OutputFile::complete()
{
    const bool has_failed = failed_;
    const bool stored = store();
    const bool closed = close();
    if (stored && closed && !has_failed)
        former_.discard();
    return has_failed || (closed && stored);
}

InputFile::~InputFile()
{
    if (file_ != nullptr)
        (void)close();
}

bool InputFile::open(const char* name)
{
    file_ = platform::open_file(name, "rb", tell_wait_for_writer);
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
    print_failure("Error %s the data file '%s'", what, printable(file_name).c_str());
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
