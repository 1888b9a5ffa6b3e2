#include "simulator/scenario/injection.h"

namespace simulator
{

namespace
{

std::vector<Fault> faults;
std::vector<Block> blocks;
std::vector<Reply> replies;

bool concerns(const Calls& calls, std::size_t function, std::uint32_t key)
{
    if (calls.function == no_function)
        return functions[function].returns == Returns::status;
    return calls.function == function && (!calls.key || *calls.key == key);
}

bool same(const Calls& one, const Calls& other)
{
    return one.function == other.function && one.key == other.key;
}

bool strikes(const Fault& fault, std::int64_t now_us)
{
    switch (fault.when) {
    case Fault::When::always:
        return true;
    case Fault::When::at:
        return fault.seen == fault.number;
    case Fault::When::every:
        return fault.seen % fault.number == 0;
    case Fault::When::between:
        return now_us >= fault.from_us && now_us < fault.until_us;
    }
    return false;
}

} // namespace

void add_fault(Fault fault)
{
    faults.push_back(std::move(fault));
}

void add_block(Block block)
{
    blocks.push_back(block);
}

void add_reply(Reply reply)
{
    remove_replies(reply.calls, reply.parameter, reply.element);
    replies.push_back(std::move(reply));
}

void remove_faults(const Calls& calls)
{
    std::erase_if(faults, [&](const Fault& fault) { return same(fault.calls, calls); });
}

void remove_blocks(const Calls& calls)
{
    std::erase_if(blocks, [&](const Block& block) { return same(block.calls, calls); });
}

void remove_replies(const Calls& calls, std::size_t parameter, std::int64_t element)
{
    std::erase_if(replies, [&](const Reply& reply) {
        return same(reply.calls, calls) && reply.parameter == parameter && reply.element == element;
    });
}

void remove_injections()
{
    faults.clear();
    blocks.clear();
    replies.clear();
}

bool take_fault(std::size_t function, std::uint32_t key, std::int64_t now_us, std::string& text)
{
    bool failed = false;
    for (Fault& fault : faults) {
        if (!concerns(fault.calls, function, key))
            continue;
        ++fault.seen;
        if (!failed && strikes(fault, now_us)) {
            failed = true;
            text = fault.text;
        }
    }
    return failed;
}

std::int64_t take_block_us(std::size_t function, std::uint32_t key)
{
    std::int64_t wait_us = 0;
    for (Block& block : blocks) {
        if (!concerns(block.calls, function, key))
            continue;
        ++block.seen;
        if (block.number == 0 || block.seen == block.number)
            wait_us += block.wait_us;
    }
    return wait_us;
}

std::vector<ForcedResult> take_replies(std::size_t function, std::uint32_t key)
{
    std::vector<ForcedResult> forced;
    for (Reply& reply : replies) {
        if (!concerns(reply.calls, function, key))
            continue;
        forced.push_back({reply.parameter, reply.element, &reply.values[reply.next]});
        if (reply.next + 1 < reply.values.size())
            ++reply.next;
    }
    return forced;
}

} // namespace simulator
