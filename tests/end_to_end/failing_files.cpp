// Preloaded into the program: of its calls that open, copy, flush, store and close files, the one
// whose number stands in FAILING_FILE_CALL fails. What the simulated instrument opens does not
// count. While there is a file HANGING_DISK they hang when they flush.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace
{

std::FILE* watched = nullptr;
int copy = -1; ///< descriptor

bool is_turn_of_failing()
{
    static int calls = 0;
    const char* number = std::getenv("FAILING_FILE_CALL");
    if (number == nullptr || ++calls != std::atoi(number))
        return false;
    errno = EIO;
    return true;
}

template <class Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" std::FILE* fopen(const char* name, const char* mode)
{
    const bool counts = std::strstr(name, "scenario") == nullptr;
    if (counts && is_turn_of_failing())
        return nullptr;
    std::FILE* file = next<std::FILE*(const char*, const char*)>("fopen")(name, mode);
    if (counts)
        watched = file;
    return file;
}

extern "C" int open(const char* name, int flags, ...)
{
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const bool counts = std::strchr(name, '~') != nullptr;
    if (counts && is_turn_of_failing())
        return -1;
    const int descriptor = next<int(const char*, int, ...)>("open")(name, flags, mode);
    if (counts)
        copy = descriptor;
    return descriptor;
}

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size)
{
    if (descriptor == copy && is_turn_of_failing())
        return -1;
    return next<ssize_t(int, const void*, std::size_t)>("write")(descriptor, bytes, size);
}

extern "C" int fsync(int descriptor)
{
    return descriptor == copy && is_turn_of_failing() ? -1 : next<int(int)>("fsync")(descriptor);
}

extern "C" int close(int descriptor)
{
    copy = descriptor == copy ? -1 : copy;
    return next<int(int)>("close")(descriptor);
}

extern "C" int fflush(std::FILE* file)
{
    const char* hanging = std::getenv("HANGING_DISK");
    while (hanging != nullptr && file == watched && access(hanging, F_OK) == 0)
        usleep(10'000);
    const int result = next<int(std::FILE*)>("fflush")(file);
    return file != nullptr && file == watched && is_turn_of_failing() ? EOF : result;
}

extern "C" int fdatasync(int descriptor)
{
    return is_turn_of_failing() ? -1 : next<int(int)>("fdatasync")(descriptor);
}

extern "C" int fclose(std::FILE* file)
{
    const bool fails = file == watched && is_turn_of_failing();
    const int result = next<int(std::FILE*)>("fclose")(file);
    return fails ? EOF : result;
}
