#include "bench/support/system_calls.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <dlfcn.h>
#include <poll.h>
#include <sys/types.h>
#include <unistd.h>

constinit thread_local bench::SystemCalls bench::system_calls;

namespace
{

using bench::system_calls;

/// The C library's own function.
template <class Function>
Function* real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

ssize_t write(int descriptor, const void* bytes, std::size_t size)
{
    static auto* const passed_on = real<ssize_t(int, const void*, std::size_t)>("write");
    const ssize_t written = passed_on(descriptor, bytes, size);
    ++system_calls.writes;
    system_calls.written_bytes += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    return written;
}

ssize_t read(int descriptor, void* buffer, std::size_t size)
{
    static auto* const passed_on = real<ssize_t(int, void*, std::size_t)>("read");
    ++system_calls.reads;
    return passed_on(descriptor, buffer, size);
}

int poll(pollfd* entries, nfds_t count, int timeout_ms)
{
    static auto* const passed_on = real<int(pollfd*, nfds_t, int)>("poll");
    ++system_calls.polls;
    return passed_on(entries, count, timeout_ms);
}

int ppoll(pollfd* entries, nfds_t count, const timespec* timeout, const sigset_t* signals)
{
    static auto* const passed_on =
        real<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
    ++system_calls.polls;
    return passed_on(entries, count, timeout, signals);
}

} // extern "C"
