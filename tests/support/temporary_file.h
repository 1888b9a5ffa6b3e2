/// Files of the tests.
#pragma once

#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

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
    static inline const unsigned process_ = std::random_device{}();
    std::string name_ = testing::TempDir() + "kov-test-" + std::to_string(process_) + '-' +
                        std::to_string(++count_) + ".txt";
};
