/// A pipe that stands in the place of a file.
#pragma once

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

/// A named pipe with an end that the test holds.
class NamedPipe
{
public:
    explicit NamedPipe(std::string name) : name_{std::move(name)}
    {
        EXPECT_EQ(mkfifo(name_.c_str(), 0600), 0);
    }
    ~NamedPipe() { close_end(); }
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;

    /// O_RDONLY: the program finds a reader. O_WRONLY: waits until the program reads. O_RDWR: both
    /// ends are there at once.
    void open_end(int access)
    {
        const int wait = access == O_WRONLY ? 0 : O_NONBLOCK;
        descriptor_ = open(name_.c_str(), access | wait | O_CLOEXEC);
        EXPECT_GE(descriptor_, 0);
    }
    void close_end()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
        descriptor_ = -1;
    }
    void make_small() const { EXPECT_GE(fcntl(descriptor_, F_SETPIPE_SZ, 4096), 0); }

    [[nodiscard]] bool is_full() const
    {
        int waiting = 0;
        return ioctl(descriptor_, FIONREAD, &waiting) == 0 &&
               waiting == fcntl(descriptor_, F_GETPIPE_SZ);
    }
    /// All that is in it.
    std::string take()
    {
        std::string text;
        std::array<char, 4096> bytes{};
        ssize_t count = 0;
        while ((count = read(descriptor_, bytes.data(), bytes.size())) > 0)
            text.append(bytes.data(), static_cast<std::size_t>(count));
        return text;
    }
    ssize_t put(std::string_view text) const
    {
        return write(descriptor_, text.data(), text.size());
    }

private:
    std::string name_;
    int descriptor_ = -1;
};
