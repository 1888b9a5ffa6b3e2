/// What a tester puts in the way of calls: faults, waits and forced replies.
#pragma once

#include "simulator/scenario/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator
{

/// The calls that something waits for: those of one function (or of all that have a status), and
/// among these, when a key is given, those whose first number (an address, an index) is the key.
struct Calls {
    std::size_t function = no_function; ///< no_function = all
    std::optional<std::uint32_t> key;
};

struct Fault {
    enum class When : std::uint8_t { always, at, every, between };
    Calls calls;
    When when = When::always;
    std::uint32_t number = 0; ///< at, every: counted from when the fault was set
    std::int64_t from_us = 0; ///< between: on the monotonic clock
    std::int64_t until_us = 0;
    std::string text; ///< the error text; empty = the usual one
    std::uint32_t seen = 0;
};

struct Block {
    Calls calls;
    std::uint32_t number = 0; ///< the call that waits; 0 = each
    std::int64_t wait_us = 0;
    std::uint32_t seen = 0;
};

struct Reply {
    Calls calls;
    std::size_t parameter = 0;
    std::int64_t element = -1; ///< of an array; -1 = all
    std::vector<Value> values; ///< of successive calls; the last one stays
    std::size_t next = 0;
};

void add_fault(Fault fault);
void add_block(Block block);
void add_reply(Reply reply);

/// Take back what was set for exactly these calls.
void remove_faults(const Calls& calls);
void remove_blocks(const Calls& calls);
void remove_replies(const Calls& calls, std::size_t parameter, std::int64_t element);
void remove_injections();

/// Counts a call for every fault. True when it has to fail; `text` is then the fault's text.
[[nodiscard]] bool take_fault(std::size_t function, std::uint32_t key, std::int64_t now_us,
                              std::string& text);

/// Counts a call for every block and returns how long it has to wait.
[[nodiscard]] std::int64_t take_block_us(std::size_t function, std::uint32_t key);

/// A value that this call has to deliver instead of its own; it lives as long as its reply.
struct ForcedResult {
    std::size_t parameter;
    std::int64_t element;
    const Value* value;
};

/// The forced results of a call; moves each reply on to its next value.
[[nodiscard]] std::vector<ForcedResult> take_replies(std::size_t function, std::uint32_t key);

} // namespace simulator
