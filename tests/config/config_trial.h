/// Trials of the configuration commands: in a folder of their own, with some sets to begin with.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "devlib/COM-KOV-CTRL.h"
#include "tests/support/trial.h"

/// The working directory as long as it exists.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        const std::string name = "kov-config-" + std::to_string(std::random_device{}());
        const std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    ~TemporaryFolder()
    {
        const std::filesystem::path folder = std::filesystem::current_path();
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(folder);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

inline std::string contents(const char* file_name)
{
    std::ifstream file{file_name, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

inline void write_file(const char* file_name, const std::string& text)
{
    std::ofstream{file_name, std::ios::binary} << text;
}

/// Marks a set and names it, as an earlier run could have.
inline void make_set(Trial& trial, unsigned number, const std::string& name, bool active,
                     bool valid = true)
{
    const auto index = static_cast<std::uint16_t>(number - 1);
    std::string field = name;
    field.resize(203);
    EXPECT_EQ(COM_KOV_CTRL_Open(3), 0);
    EXPECT_EQ(COM_KOV_CTRL_SetConfigName(index, field.c_str()), 0);
    EXPECT_EQ(COM_KOV_CTRL_SetConfigFlags(index, active ? 1 : 0, valid ? 1 : 0), 0);
    EXPECT_EQ(COM_KOV_CTRL_Close(), 0);
    trial.calls.clear();
}
