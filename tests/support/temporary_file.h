/// Files of the tests.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>

inline std::string contents(const std::string& file_name)
{
    std::ifstream file{file_name, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

inline void write_file(const std::string& file_name, const std::string& text)
{
    std::ofstream{file_name, std::ios::binary} << text;
}

/// A name in the folder for such files that no other process has.
inline std::string temporary_name()
{
    static const unsigned process = std::random_device{}();
    static int count = 0;
    return testing::TempDir() + "kov-test-" + std::to_string(process) + '-' +
           std::to_string(++count);
}

/// The name of a file of this process alone; what is there at the end is removed, and what was kept
/// beside it.
class TemporaryFile
{
public:
    TemporaryFile() = default;
    ~TemporaryFile()
    {
        std::filesystem::remove(name_);
        std::filesystem::remove(name_ + '~');
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::string text() const { return contents(name_); }

private:
    std::string name_ = temporary_name() + ".txt";
};

/// The working directory as long as it exists.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::filesystem::create_directory(name_);
        std::filesystem::current_path(name_);
    }
    ~TemporaryFolder()
    {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(name_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

private:
    const std::filesystem::path before_ = std::filesystem::current_path();
    const std::string name_ = temporary_name();
};
