#include "companion/journal/load.h"

#include "companion/journal/host.h"
#include "companion/text.h"
#include "frame/platform/platform.h"

#include <cerrno>
#include <cstring>
#include <memory>

namespace companion
{

bool read_journal(const std::string& file, const Surroundings& outside,
                  const std::function<void(const journal::Heading&)>& take_heading,
                  const std::function<void(const journal::RecordedCall&)>& take_call,
                  const std::function<void(const journal::Reader&)>& take_end)
{
    const auto close = [](std::FILE* opened) {
        if (opened != stdin)
            std::fclose(opened);
    };
    const std::unique_ptr<std::FILE, void (*)(std::FILE*)> opened{
        file == "-" ? stdin : journal::host::open_to_read(file), close};
    if (opened == nullptr) {
        const char* const why = std::strerror(errno);
        if (platform::stop_signal() == 0) // else a pipe without a writer was not waited for
            outside.complain(valid_utf8(file) + ": " + why);
        return false;
    }
    journal::Reader reader{opened.get()};
    if (reader.problem().empty())
        take_heading(reader.heading());
    journal::RecordedCall call;
    while (platform::stop_signal() == 0 && reader.next(call))
        take_call(call);
    if (reader.problem().empty()) {
        take_end(reader);
        return true;
    }
    if (platform::stop_signal() == 0)
        outside.complain(valid_utf8(file) + ", " + valid_utf8(reader.problem()));
    return false;
}

bool is_sound_journal(const std::string& file, const Surroundings& outside)
{
    return read_journal(
        file, outside, [](const auto&) {}, [](const auto&) {}, [](const auto&) {});
}

} // namespace companion
