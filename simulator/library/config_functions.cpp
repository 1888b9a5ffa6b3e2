/// The current configuration, the configuration sets and the memory: the same bytes.
#include "simulator/library/call.h"
#include "simulator/library/units.h"
#include "simulator/model/config_record.h"
#include "simulator/model/status.h"

#include <algorithm>
#include <cstring>

using namespace simulator;

namespace
{

/// Runs `work(instrument, record)` for the record of a set.
template <Name name, typename Work, typename... Parameters>
std::int32_t call_set(std::uint16_t index, const Work& work, Parameters... parameters)
{
    return call<name>(
        [&](Instrument& instrument) {
            if (index >= set_count) {
                explain("there is no configuration set with the index " + std::to_string(index));
                return Failure::bad_value;
            }
            const Record set = record(instrument.memory, index + 1U);
            return call_steps::run([&](Instrument& changed) { return work(changed, set); },
                                   instrument);
        },
        index, parameters...);
}

Failure check_range(std::uint32_t start, std::uint32_t count)
{
    if (std::uint64_t{start} + count <= memory_reach)
        return Failure::none;
    explain("the memory ends before " + std::to_string(std::uint64_t{start} + count));
    return Failure::bad_value;
}

} // namespace

std::int32_t COM_KOV_CTRL_GetCurrentConfig(ConfigRecord* config)
{
    return call<"GetCurrentConfig">(
        [&](Instrument& instrument) {
            std::copy_n(current_config(instrument).begin(), config_size, config->bytes);
        },
        config);
}

std::int32_t COM_KOV_CTRL_SetCurrentConfig(const ConfigRecord* config)
{
    return call<"SetCurrentConfig">(
        [&](Instrument& instrument) {
            std::copy_n(config->bytes, config_size, current_config(instrument).begin());
            settings_changed(instrument);
        },
        config);
}

std::int32_t COM_KOV_CTRL_GetConfigData(std::uint16_t index, ConfigRecord* config)
{
    return call_set<"GetConfigData">(
        index,
        [&](Instrument&, const Record& set) {
            std::copy_n(set.config.begin(), config_size, config->bytes);
        },
        config);
}

std::int32_t COM_KOV_CTRL_SetConfigData(std::uint16_t index, const ConfigRecord* config)
{
    return call_set<"SetConfigData">(
        index,
        [&](Instrument& instrument, const Record& set) {
            std::copy_n(config->bytes, config_size, set.config.begin());
            instrument.changed = true;
        },
        config);
}

std::int32_t COM_KOV_CTRL_GetConfigName(std::uint16_t index, char* name)
{
    return call_set<"GetConfigName">(
        index,
        [&](Instrument&, const Record& set) { std::memcpy(name, set.name.data(), name_size); },
        name);
}

std::int32_t COM_KOV_CTRL_SetConfigName(std::uint16_t index, const char* name)
{
    return call_set<"SetConfigName">(
        index,
        [&](Instrument& instrument, const Record& set) {
            std::fill(set.name.begin(), set.name.end(), std::uint8_t{0});
            for (std::size_t i = 0; i < name_size && name[i] != '\0'; ++i)
                set.name[i] = static_cast<std::uint8_t>(name[i]);
            instrument.changed = true;
        },
        name);
}

std::int32_t COM_KOV_CTRL_GetConfigFlags(std::uint16_t index, std::uint8_t* active,
                                         std::uint8_t* valid)
{
    return call_set<"GetConfigFlags">(
        index,
        [&](Instrument&, const Record& set) {
            *active = (set.flags & set_active) != 0;
            *valid = (set.flags & set_valid) != 0;
        },
        active, valid);
}

std::int32_t COM_KOV_CTRL_SetConfigFlags(std::uint16_t index, std::uint8_t active,
                                         std::uint8_t valid)
{
    return call_set<"SetConfigFlags">(
        index,
        [&](Instrument& instrument, const Record& set) {
            set.flags = static_cast<std::uint8_t>((active != 0 ? set_active : 0) |
                                                  (valid != 0 ? set_valid : 0));
            instrument.changed = true;
        },
        active, valid);
}

std::int32_t COM_KOV_CTRL_SaveCurrentConfig(std::uint16_t index)
{
    return call_set<"SaveCurrentConfig">(index, [](Instrument& instrument, const Record& set) {
        std::copy_n(current_config(instrument).begin(), config_size, set.config.begin());
        set.flags = set_active | set_valid;
        instrument.changed = true;
    });
}

std::int32_t COM_KOV_CTRL_LoadCurrentConfig(std::uint16_t index)
{
    return call_set<"LoadCurrentConfig">(index, [](Instrument& instrument, const Record& set) {
        if ((set.flags & set_valid) == 0) {
            explain("the configuration set holds no valid data");
            return Failure::bad_value;
        }
        std::copy_n(set.config.begin(), config_size, current_config(instrument).begin());
        settings_changed(instrument);
        return Failure::none;
    });
}

std::int32_t COM_KOV_CTRL_GetConfigList(std::uint8_t* active, std::uint8_t* valid)
{
    return call<"GetConfigList">(
        [&](Instrument& instrument) {
            for (unsigned set = 0; set < set_count; ++set) {
                const std::uint8_t flags = record(instrument.memory, set + 1).flags;
                active[set] = (flags & set_active) != 0;
                valid[set] = (flags & set_valid) != 0;
            }
        },
        active, valid);
}

std::int32_t COM_KOV_CTRL_GetConfigValues(std::uint16_t* setCount, std::uint16_t* dataSize,
                                          std::uint16_t* nameSize)
{
    return call<"GetConfigValues">(
        [&](Instrument&) {
            *setCount = set_count;
            *dataSize = config_size;
            *nameSize = name_size;
        },
        setCount, dataSize, nameSize);
}

std::int32_t COM_KOV_CTRL_GetMemoryData(std::uint32_t start, std::uint32_t count,
                                        std::uint8_t* data)
{
    return call<"GetMemoryData">(
        [&](Instrument& instrument) {
            const Failure failure = check_range(start, count);
            if (failure == Failure::none)
                read_memory(instrument.memory, start, {data, count});
            return failure;
        },
        start, count, std::span<std::uint8_t>(data, count));
}

std::int32_t COM_KOV_CTRL_SetMemoryData(std::uint32_t start, std::uint32_t count,
                                        const std::uint8_t* data)
{
    return call<"SetMemoryData">(
        [&](Instrument& instrument) {
            const Failure failure = check_range(start, count);
            if (failure == Failure::none)
                write_memory(instrument.memory, start, {data, count});
            return failure;
        },
        start, count, std::span<const std::uint8_t>(data, count));
}

std::int32_t COM_KOV_CTRL_UpdateMemoryData(void)
{
    return call<"UpdateMemoryData">([](Instrument& instrument) {
        take_over(instrument.memory);
        settings_changed(instrument);
    });
}
