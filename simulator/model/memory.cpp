#include "simulator/model/memory.h"

namespace simulator
{

ZeroedBytes zeroed_bytes(std::size_t count)
{
    void* const bytes = std::calloc(count, 1);
    if (bytes == nullptr)
        std::abort();
    return ZeroedBytes{static_cast<std::uint8_t*>(bytes)};
}

Record record(Memory& memory, unsigned number)
{
    const std::span<std::uint8_t> bytes{memory.bytes.get() + number * record_size, record_size};
    return {bytes[0], bytes.subspan<1, config_size>(), bytes.subspan<1 + config_size, name_size>()};
}

void read_memory(const Memory& memory, std::size_t start, std::span<std::uint8_t> data)
{
    for (std::size_t i = 0; i < data.size(); ++i) {
        const std::size_t place = start + i;
        if (place >= memory_size)
            data[i] = 0xFF;
        else if (!memory.written.empty() && memory.is_written[place])
            data[i] = memory.written[place];
        else
            data[i] = memory.bytes[place];
    }
}

void write_memory(Memory& memory, std::size_t start, std::span<const std::uint8_t> data)
{
    memory.written.resize(memory_size);
    memory.is_written.resize(memory_size);
    for (std::size_t i = 0; i < data.size() && start + i < memory_size; ++i) {
        memory.written[start + i] = data[i];
        memory.is_written[start + i] = true;
    }
}

void take_over(Memory& memory)
{
    for (std::size_t place = 0; place < memory.written.size(); ++place)
        if (memory.is_written[place])
            memory.bytes[place] = memory.written[place];
    drop_written(memory);
}

void drop_written(Memory& memory)
{
    memory.written.clear();
    memory.is_written.clear();
}

} // namespace simulator
