/// The instrument's memory: 1024 records of 256 bytes, the first with the current settings, then
/// one per configuration set. A record is one byte of flags, the 53 bytes of a configuration and a
/// name of 202 bytes; so the settings, the sets and the memory image are the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

namespace simulator
{

inline constexpr std::size_t memory_size = 0x40000;
inline constexpr std::size_t memory_reach = 0x400A0; ///< what may be asked for, see read_memory
inline constexpr std::size_t record_size = 256;
inline constexpr std::size_t config_size = 53;
inline constexpr std::size_t name_size = 202;
inline constexpr unsigned set_count = 1023;

inline constexpr std::uint8_t set_active = 0x01;
inline constexpr std::uint8_t set_valid = 0x02;

struct Freed {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
};

/// As many zeros. The system gives such memory as it is touched, and most of it never is.
using ZeroedBytes = std::unique_ptr<std::uint8_t[], Freed>;
[[nodiscard]] ZeroedBytes zeroed_bytes(std::size_t count);

struct Memory {
    ZeroedBytes bytes = zeroed_bytes(memory_size);
    /// Bytes written by address that the controller has not taken over, and where there are any;
    /// both empty when there are none.
    std::vector<std::uint8_t> written;
    std::vector<bool> is_written;
};

/// One record: 0 = the current settings, n = set number n.
struct Record {
    std::uint8_t& flags;
    std::span<std::uint8_t, config_size> config;
    std::span<std::uint8_t, name_size> name;
};
[[nodiscard]] Record record(Memory& memory, unsigned number);

/// Reads as the memory interface sees it: what was written, taken over or not; behind the end FFh.
void read_memory(const Memory& memory, std::size_t start, std::span<std::uint8_t> data);

/// Writes what take_over() will put in force; what goes behind the end is lost.
void write_memory(Memory& memory, std::size_t start, std::span<const std::uint8_t> data);

/// Puts the written bytes in force.
void take_over(Memory& memory);

/// Forgets written bytes that were not put in force.
void drop_written(Memory& memory);

} // namespace simulator
