/// A file for as long as a measurement takes.
#pragma once

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

} // namespace bench
