#include "frame/platform/platform.h"
#include "frame/platform/posix/posix.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace platform
{

namespace
{

/// An open file; none when opening failed.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (is_open())
            close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] bool is_open() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }

private:
    const int number_;
};

bool write_all(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            return false;
    }
    return true;
}

/// Copies what follows; false, too, when the program is asked to end.
bool copy_bytes(int from, int to)
{
    std::array<char, 65536> piece;
    while (!posix::stop_is_due()) {
        const ssize_t count = read(from, piece.data(), piece.size());
        if (count == 0)
            return true;
        if (count > 0 ? !write_all(to, {piece.data(), static_cast<std::size_t>(count)})
                      : errno != EINTR)
            return false;
    }
    return false;
}

/// Nobody may do more with the copy than with the file.
bool copy_permissions(const struct stat& from, int to)
{
    mode_t mode = from.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    struct stat copy = {};
    if (fstat(to, &copy) != 0)
        return false;
    if (copy.st_gid != from.st_gid && fchown(to, static_cast<uid_t>(-1), from.st_gid) != 0)
        mode &= ~static_cast<mode_t>(S_IRWXG);
    return fchmod(to, mode) == 0;
}

/// A file's entry in its folder is on the disk, too. Some file systems cannot tell.
void store_entry(const std::string& name)
{
    const std::size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1);
    const Descriptor descriptor{open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (descriptor.is_open())
        (void)fsync(descriptor.number());
}

/// The time of a marked copy: a moment behind its file's. Nobody else's copy has just that.
timespec mark_for(const struct stat& file)
{
    constexpr long moment_ns = 10'000'000;
    constexpr long second_ns = 1'000'000'000;
    timespec time = file.st_mtim;
    time.tv_nsec += moment_ns;
    time.tv_sec += time.tv_nsec / second_ns;
    time.tv_nsec %= second_ns;
    return time;
}

bool is_marked(const struct stat& file, const char* copy_name)
{
    struct stat copy = {};
    const timespec mark = mark_for(file);
    return lstat(copy_name, &copy) == 0 && S_ISREG(copy.st_mode) &&
           copy.st_mtim.tv_sec == mark.tv_sec && copy.st_mtim.tv_nsec == mark.tv_nsec;
}

Copied result_of_failed_creation()
{
    switch (errno) {
    case EEXIST:
        return Copied::name_taken;
    case ENAMETOOLONG:
        return Copied::name_too_long;
    default:
        return Copied::no;
    }
}

/// True when something has been written into a pipe, or its last writer has gone.
bool has_news(int pipe)
{
    pollfd entry = {.fd = pipe, .events = POLLIN, .revents = 0};
    return poll(&entry, 1, 0) > 0;
}

/// Opens a pipe as soon as somebody reads it or has written into it; null, too, when the program is
/// asked to end. To wait in open() would miss a request that comes just before.
std::FILE* open_pipe(const char* name, const char* mode, void (*before_wait)(const char* name))
{
    constexpr std::int64_t interval_ms = 20;
    const bool is_read = *mode == 'r';
    const int patient_looks = is_read ? 25 : 0; // a writer may have to work for what it writes
    const int access = is_read ? O_RDONLY : O_WRONLY;
    int pipe = -1;
    const auto look = [&] {
        if (pipe < 0)
            pipe = open(name, access | O_NONBLOCK | O_CLOEXEC);
        return pipe < 0 ? errno != ENXIO : !is_read || has_news(pipe);
    };
    bool is_over = look();
    for (int looks = 0; !is_over && !posix::stop_is_due(); ++looks) {
        if (looks == patient_looks)
            before_wait(name);
        sleep_ms(interval_ms);
        is_over = look();
    }
    // Not closed in between: who has the other end would take that for the end.
    if (is_over && pipe >= 0 && fcntl(pipe, F_SETFL, access) == 0)
        return fdopen(pipe, mode);
    if (pipe >= 0)
        close(pipe);
    return nullptr;
}

} // namespace

std::FILE* open_file(const char* name, const char* mode, void (*before_wait)(const char* name))
{
    struct stat status = {};
    if (before_wait != nullptr && stat(name, &status) == 0 && S_ISFIFO(status.st_mode))
        return open_pipe(name, mode, before_wait);
    return std::fopen(name, mode);
}

bool store_file(std::FILE* file)
{
    // Pipes and devices refuse: they have nothing to wait for.
    return fdatasync(fileno(file)) == 0 || errno == EINVAL || errno == ENOTSUP;
}

FilePlace place_of_file(std::FILE* file, const char* name)
{
    struct stat open_one = {};
    struct stat named_one = {};
    if (fstat(fileno(file), &open_one) != 0 || !S_ISREG(open_one.st_mode))
        return FilePlace::there;
    if (open_one.st_nlink == 0)
        return FilePlace::nowhere;
    const bool same = stat(name, &named_one) == 0 && named_one.st_dev == open_one.st_dev &&
                      named_one.st_ino == open_one.st_ino;
    return same ? FilePlace::there : FilePlace::elsewhere;
}

Copied copy_file(const char* name, const char* copy_name)
{
    struct stat status = {};
    // Looked at before it is opened: to open a pipe or a device may mean something to it.
    if (stat(name, &status) != 0 || !S_ISREG(status.st_mode))
        return Copied::nothing;
    if (is_marked(status, copy_name))
        return Copied::already;
    if (status.st_size == 0)
        return Copied::nothing;
    const Descriptor from{open(name, O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (!from.is_open())
        return Copied::no;
    const Descriptor to{
        open(copy_name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR)};
    if (!to.is_open())
        return result_of_failed_creation();
    if (copy_bytes(from.number(), to.number()) && copy_permissions(status, to.number()) &&
        fsync(to.number()) == 0) {
        store_entry(copy_name);
        return Copied::yes;
    }
    remove_file(copy_name);
    return Copied::no;
}

void mark_copy(const char* name, const char* copy_name)
{
    struct stat file = {};
    if (stat(name, &file) != 0)
        return;
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, mark_for(file)};
    (void)utimensat(AT_FDCWD, copy_name, times, AT_SYMLINK_NOFOLLOW);
}

void remove_file(const char* name)
{
    (void)unlink(name);
}

} // namespace platform
