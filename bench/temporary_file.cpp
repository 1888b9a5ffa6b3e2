#include "bench/temporary_file.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace bench
{

TemporaryFile::TemporaryFile()
{
    const int file = mkstemp(name_.data());
    if (file < 0) {
        std::perror("no temporary file");
        std::exit(EXIT_FAILURE);
    }
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

} // namespace bench
