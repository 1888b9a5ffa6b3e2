#include "tests/support/full_disk.h"

#include <csignal>
#include <sys/resource.h>

namespace
{

rlimit limit_before = {};

} // namespace

FullDisk::FullDisk(unsigned long long longest)
{
    std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
    getrlimit(RLIMIT_FSIZE, &limit_before);
    const rlimit limit = {.rlim_cur = longest, .rlim_max = limit_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
}

FullDisk::~FullDisk()
{
    setrlimit(RLIMIT_FSIZE, &limit_before);
}
