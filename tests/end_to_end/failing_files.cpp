// Preloaded into the program: of its calls that open, flush, store and close files, the one whose
// number stands in FAILING_FILE_CALL fails. What the simulated instrument opens does not count.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

namespace
{

std::FILE* watched = nullptr;

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

extern "C" int fflush(std::FILE* file)
{
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
