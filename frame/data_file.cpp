#include "frame/data_file.h"

#include <array>
#include <utility>

#include "frame/format.h"

OutputFile::~OutputFile()
{
    if (is_open())
        (void)close();
}

bool OutputFile::create(const char* name)
{
    file_ = std::fopen(name, "wb");
    flushed_ms_ = 0;
    return is_open();
}

bool OutputFile::print(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    (void)std::vfprintf(file_, format, arguments);
    va_end(arguments);
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

bool OutputFile::flush_when_due(std::int64_t now_ms)
{
    constexpr std::int64_t interval_ms = 1000;
    if (flushed_ms_ != 0 && now_ms - flushed_ms_ < interval_ms)
        return std::ferror(file_) == 0;
    flushed_ms_ = now_ms;
    return flush();
}

bool OutputFile::close()
{
    const bool flushed = flush();
    return std::fclose(std::exchange(file_, nullptr)) == 0 && flushed;
}

bool read_file(const char* name, std::string& bytes)
{
    bytes.clear();
    std::FILE* file = std::fopen(name, "rb");
    if (file == nullptr)
        return false;
    std::array<char, 16384> block;
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file)) > 0)
        bytes.append(block.data(), count);
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
