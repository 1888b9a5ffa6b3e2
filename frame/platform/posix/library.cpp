// Where the device library stands, whether it is one that this program can load, and its functions.
#include "frame/platform/platform.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

/// The header of the program itself, which the linker names.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace platform
{

namespace
{

constexpr const char* library_name = "libCOM-KOV-CTRL.so";

void* library = nullptr;

/// Without the slash at its end.
std::string folder_of(std::string_view path)
{
    return std::string{path.substr(0, path.rfind('/'))};
}

/// Empty when the system does not tell.
std::string program_folder()
{
    std::array<char, 4096> path;
    const ssize_t size = readlink("/proc/self/exe", path.data(), path.size());
    return folder_of({path.data(), size > 0 ? static_cast<std::size_t>(size) : 0});
}

bool is_nothing(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

LibraryFailure failure_of(int error)
{
    return {.fault = is_nothing(error) || error == ELOOP ? LibraryFault::dangling_link
                                                         : LibraryFault::unreadable,
            .detail = {}};
}

/// A file that may be a library, as far as its headers tell.
class LibraryFile
{
public:
    /// Never waits for the writer of a pipe.
    explicit LibraryFile(const std::string& name)
        : descriptor_{open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)}
    {
    }
    ~LibraryFile()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    /// What speaks against loading it. Of a file that is shorter than its headers say the loader
    /// maps pages that are not there, and whoever touches one gets a bus error.
    [[nodiscard]] LibraryFault fault()
    {
        struct stat about = {};
        if (descriptor_ < 0 || fstat(descriptor_, &about) != 0)
            return failure_of(errno).fault;
        if (!S_ISREG(about.st_mode))
            return LibraryFault::no_file;
        size_ = static_cast<std::uint64_t>(about.st_size);
        if (size_ == 0)
            return LibraryFault::empty;
        LibraryFault found = header_fault();
        if (found == LibraryFault::none)
            found = segments_fault();
        return found;
    }

private:
    /// Reads through a window: what stands close together costs the system one call.
    template <class T>
    [[nodiscard]] bool read(std::uint64_t offset, T& value)
    {
        static_assert(sizeof value <= sizeof window_);
        const auto is_seen = [&] {
            return offset >= window_begin_ && offset + sizeof value <= window_end_;
        };
        if (offset > size_)
            return false;
        if (!is_seen()) {
            const ssize_t size =
                pread(descriptor_, window_.data(), window_.size(), static_cast<off_t>(offset));
            window_begin_ = offset;
            window_end_ = offset + static_cast<std::uint64_t>(std::max<ssize_t>(size, 0));
        }
        if (!is_seen())
            return false;
        std::memcpy(&value, window_.data() + (offset - window_begin_), sizeof value);
        return true;
    }
    [[nodiscard]] bool holds(std::uint64_t offset, std::uint64_t size) const
    {
        return offset <= size_ && size <= size_ - offset;
    }

    [[nodiscard]] LibraryFault header_fault()
    {
        // The first bytes are the same for all widths and machines.
        std::array<unsigned char, EI_NIDENT> identity = {};
        if (!read(0, identity) || std::memcmp(identity.data(), ELFMAG, SELFMAG) != 0)
            return LibraryFault::no_library;
        if (identity[EI_CLASS] != __ehdr_start.e_ident[EI_CLASS])
            return LibraryFault::other_width;
        if (identity[EI_DATA] != __ehdr_start.e_ident[EI_DATA])
            return LibraryFault::other_machine;
        if (!read(0, header_))
            return LibraryFault::truncated;
        if (header_.e_machine != __ehdr_start.e_machine)
            return LibraryFault::other_machine;
        if (header_.e_type != ET_DYN || header_.e_phentsize != sizeof(ElfW(Phdr)))
            return LibraryFault::no_library;
        const bool complete =
            holds(header_.e_shoff, std::uint64_t{header_.e_shnum} * header_.e_shentsize);
        return complete ? LibraryFault::none : LibraryFault::truncated;
    }

    [[nodiscard]] LibraryFault segments_fault()
    {
        bool has_symbols = false;
        for (std::uint64_t i = 0; i < header_.e_phnum; ++i) {
            ElfW(Phdr) segment = {};
            if (!read(header_.e_phoff + i * sizeof segment, segment))
                return LibraryFault::truncated;
            if (segment.p_type == PT_LOAD && !holds(segment.p_offset, segment.p_filesz))
                return LibraryFault::truncated;
            if (segment.p_type == PT_DYNAMIC)
                has_symbols = tells_symbols(segment);
        }
        return has_symbols ? LibraryFault::none : LibraryFault::no_library;
    }

    /// The loader takes for granted that a table of symbols is told of: a file whose length is
    /// right but whose end was never written ends the process.
    [[nodiscard]] bool tells_symbols(const ElfW(Phdr) & segment)
    {
        bool symbols = false, names = false;
        ElfW(Dyn) entry = {};
        for (std::uint64_t at = 0; at + sizeof entry <= segment.p_filesz; at += sizeof entry) {
            if (!read(segment.p_offset + at, entry) || entry.d_tag == DT_NULL)
                break;
            symbols = symbols || entry.d_tag == DT_SYMTAB;
            names = names || entry.d_tag == DT_STRTAB;
        }
        return symbols && names;
    }

    int descriptor_;
    std::uint64_t size_ = 0;
    ElfW(Ehdr) header_ = {};
    std::array<unsigned char, 4096> window_;
    std::uint64_t window_begin_ = 0, window_end_ = 0;
};

/// What the loader complains about, as far as it says so in the words that we know.
LibraryFailure failure_of_loader(std::string_view message)
{
    constexpr std::string_view no_library = ": cannot open shared object file";
    constexpr std::string_view no_symbol = "undefined symbol: ";
    constexpr std::string_view no_version = "version `";
    if (const std::size_t at = message.find(no_library); at != std::string_view::npos)
        return {.fault = LibraryFault::lacks_library, .detail = std::string{message.substr(0, at)}};
    if (const std::size_t at = message.find(no_symbol); at != std::string_view::npos) {
        message.remove_prefix(at + no_symbol.size());
        return {.fault = LibraryFault::lacks_symbol,
                .detail = std::string{message.substr(0, message.find(','))}};
    }
    if (const std::size_t at = message.find(no_version); at != std::string_view::npos) {
        message.remove_prefix(at + no_version.size());
        return {.fault = LibraryFault::lacks_version,
                .detail = std::string{message.substr(0, message.find('\''))}};
    }
    return {.fault = LibraryFault::refused, .detail = {}};
}

} // namespace

std::vector<LibraryCandidate> library_candidates(const std::string& program, bool named)
{
    // A program with rights of its own takes no library from its user, as the loader does.
    if (const char* name = secure_getenv("KOV_DEVICE_LIBRARY"); named && name != nullptr) {
        // Without a slash the loader would look for it elsewhere.
        const bool in_no_folder = *name != '\0' && std::strchr(name, '/') == nullptr;
        return {{LibraryPlace::named, std::string{in_no_folder ? "./" : ""} + name}};
    }
    std::vector<LibraryCandidate> candidates;
    const char* path = secure_getenv("LD_LIBRARY_PATH");
    for (std::string_view rest = path != nullptr ? path : ""; !rest.empty();) {
        const std::size_t length = rest.find_first_of(":;");
        std::string folder{rest.substr(0, length)};
        if (folder.empty()) // as the loader has it: where the user is
            folder = ".";
        candidates.push_back({LibraryPlace::library_path, folder + '/' + library_name});
        rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
    }
    const std::string folder = program.empty() ? program_folder() : folder_of(program);
    if (!folder.empty()) {
        const std::string installed = folder_of(folder) + "/lib/kov-controller/";
        candidates.push_back({LibraryPlace::beside_program, folder + '/' + library_name});
        candidates.push_back({LibraryPlace::maker, installed + "maker/" + library_name});
        candidates.push_back({LibraryPlace::simulator, installed + "simulator/" + library_name});
    }
    return candidates;
}

bool is_there(const std::string& file)
{
    struct stat about = {};
    return lstat(file.c_str(), &about) == 0 || !is_nothing(errno);
}

LibraryFailure look_beside(const std::string& file)
{
    const std::string folder = folder_of(file);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries{opendir(folder.c_str()), closedir};
    if (entries == nullptr && is_nothing(errno)) {
        struct stat about = {};
        if (lstat(folder.c_str(), &about) != 0)
            return {};
        // A disk that is not mounted, for instance: somebody meant the library to be there.
        return {.fault = S_ISLNK(about.st_mode) ? LibraryFault::dangling_folder
                                                : LibraryFault::no_folder,
                .detail = {}};
    }
    if (entries == nullptr)
        return failure_of(errno);
    while (const dirent* entry = readdir(entries.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            return {.fault = LibraryFault::misspelt, .detail = std::string{name}};
    }
    return {};
}

LibraryFailure load_library(const std::string& file)
{
    if (struct stat about = {}; lstat(file.c_str(), &about) != 0 && is_nothing(errno))
        return {.fault = LibraryFault::absent, .detail = {}};
    if (const LibraryFault fault = LibraryFile{file}.fault(); fault != LibraryFault::none)
        return {.fault = fault, .detail = {}};
    // At once: what is missing is noticed here, and not in the middle of a run.
    library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        return failure_of_loader(dlerror());
    return {};
}

LibraryFunctionPointer library_function(const char* name)
{
    return reinterpret_cast<LibraryFunctionPointer>(dlsym(library, name));
}

} // namespace platform
