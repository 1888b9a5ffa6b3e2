// Any bytes as a journal of library calls: what the reader gives fits the table of functions, and
// answers calls within their room.

#include "companion/journal/player.h"
#include "companion/journal/reading/values.h"
#include "devlib/COM-KOV-CTRL.h"
#include "tests/fuzz/target.h"

#include <memory>
#include <nlohmann/json.hpp>

namespace
{

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File file_of(std::string_view bytes)
{
    File file{std::tmpfile(), std::fclose};
    require(file != nullptr);
    require(std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size());
    std::rewind(file.get());
    return file;
}

/// Room for any result, and a guard behind what the interface promises.
struct Room {
    std::array<unsigned char, 2048> bytes{};
    static constexpr unsigned char guard = 0xA5;
    Room() { bytes.fill(guard); }
};

std::size_t size_of(const devlib::Parameter& parameter)
{
    using devlib::Kind;
    const std::size_t element = parameter.kind == Kind::real     ? 8
                                : parameter.kind == Kind::u32    ? 4
                                : parameter.kind == Kind::i32    ? 4
                                : parameter.kind == Kind::real32 ? 4
                                : parameter.kind == Kind::u16    ? 2
                                                                 : 1;
    return element * parameter.count;
}

/// Makes the call that the journal has next; what it writes stays in its room.
void make_call(journal::Player& player, const journal::RecordedCall& recorded)
{
    std::vector<Room> rooms(recorded.info().parameter_count());
    std::vector<journal::Argument> arguments;
    for (Room& room : rooms)
        arguments.push_back({room.bytes.data(), room.bytes.data()});
    journal::Returned returned;
    std::string difference;
    const journal::Call call = {recorded.row, arguments, nullptr, nullptr};
    // Inputs differ from what the rooms hold, unless there are none.
    if (!player.answer(call, returned, difference))
        require(!difference.empty());
    for (std::size_t i = 0; i < rooms.size(); ++i) {
        const devlib::Parameter& parameter = recorded.info().parameters[i];
        if (parameter.way == devlib::Way::out && parameter.count > 0)
            require(rooms[i].bytes[size_of(parameter)] == Room::guard);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes{as_text(data, size)};
    const File file = file_of(bytes);
    journal::Reader reader{file.get()};
    const journal::Clock clock = {};
    journal::RecordedCall call;
    std::uint64_t next = 1;
    std::size_t tried = 0;
    while (reader.next(call)) {
        require(call.number == next && call.count > 0 && call.row < devlib::function_count);
        next += call.count;
        require(!journal::call_text(call.info(), call.inputs).empty());
        require(call.failed() || call.outputs.is_null() ||
                !journal::values_text(call.info(), call.outputs).empty() || call.outputs.empty());
        if (call.inputs.empty() && tried++ < 10) {
            // As the first call of a journal of its own.
            const std::size_t end_of_heading = bytes.find('\n') + 1;
            nlohmann::json line = {
                {"n", 1}, {"call", std::string{call.info().name()}}, {"in", call.inputs}};
            if (call.info().returns == devlib::Returns::status)
                line["status"] = call.status;
            if (!call.outputs.is_null())
                line["out"] = call.outputs;
            const File one = file_of(bytes.substr(0, end_of_heading) + line.dump() + '\n');
            journal::Player player{one.get(), clock, false};
            make_call(player, call);
        }
    }
    if (reader.ending())
        require(reader.problem().empty() ? reader.ending()->calls == next - 1 : true);
    return 0;
}
