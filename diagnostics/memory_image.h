/// The controller's memory as a text file: one byte a line, two hexadecimal digits each.
#pragma once

#include "frame/files/data_file.h"
#include "frame/switches.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Saves the memory into the file `text`.
void back_memory_up(const Given&);

/// Asks twice, then writes the file `text` into the memory.
void restore_memory(const Given&);

// ---- The file, block by block ----

/// The memory is moved in blocks of this size.
inline constexpr std::uint32_t memory_block_size = 0xE0;
using MemoryBlock = std::array<std::uint8_t, memory_block_size>;

/// False when the file cannot be written.
[[nodiscard]] bool write_block(OutputFile& file, const MemoryBlock& block);

/// False when the file ends early or holds something else. Lower-case and single digits pass, as
/// do blanks and any line ends between the values.
[[nodiscard]] bool read_block(InputFile& file, MemoryBlock& block);
