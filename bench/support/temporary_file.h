/// A file or a folder for as long as a measurement takes.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace bench
{

/// An empty file that is removed at the end. Without one nothing can be measured: that ends the
/// program.
class TemporaryFile
{
public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }
    void write(std::string_view text) const;

private:
    std::string name_ = "/tmp/kov-benchmarks-XXXXXX";
};

/// The same for an empty folder, which is removed with all that is in it by then.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& name() const { return name_; }

private:
    std::filesystem::path name_;
};

} // namespace bench
