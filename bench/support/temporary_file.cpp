#include "bench/support/temporary_file.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace bench
{

namespace
{

[[noreturn]] void give_up(const char* reason)
{
    std::perror(reason);
    std::exit(EXIT_FAILURE);
}

} // namespace

TemporaryFile::TemporaryFile()
{
    const int file = mkstemp(name_.data());
    if (file < 0)
        give_up("no temporary file");
    close(file);
}

TemporaryFile::~TemporaryFile()
{
    unlink(name_.c_str());
}

void TemporaryFile::write(std::string_view text) const
{
    std::ofstream{name_, std::ios::binary} << text;
}

TemporaryFolder::TemporaryFolder()
{
    std::string name = "/tmp/kov-benchmarks-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        give_up("no temporary folder");
    name_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(name_, ignored);
}

} // namespace bench
