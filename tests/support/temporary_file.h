/// Files of the tests, and disks that are full.
#pragma once

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

/// The name of a file of this process alone; what is there at the end is removed.
class TemporaryFile
{
public:
    TemporaryFile() { std::remove(name_.c_str()); }
    ~TemporaryFile() { std::remove(name_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::string text() const
    {
        std::ifstream file(name_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void write(const std::string& text) const { std::ofstream{name_, std::ios::binary} << text; }

private:
    static inline int count_ = 0;
    std::string name_ = testing::TempDir() + "kov-test-" + std::to_string(getpid()) + '-' +
                        std::to_string(++count_) + ".txt";
};

/// For as long as it exists no file can become longer than this.
class FullDisk
{
public:
    explicit FullDisk(rlim_t longest)
    {
        std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {.rlim_cur = longest, .rlim_max = before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_ = {};
};
