/// The call of the device library that is being made. Only a handler of signals wants to know:
/// whoever asks the program to end while a call blocks is told what is waited for.
#pragma once

#include <atomic>

namespace platform
{

struct CurrentCall {
    std::atomic<const char*> name = nullptr; ///< null between calls
    std::atomic<unsigned> number = 0;        ///< tells calls of one name apart
};

inline constinit CurrentCall current_call;

/// A call for as long as it exists. Takes no time worth counting: when a call began is known from
/// the last look at the clock before it.
class CallInProgress
{
public:
    explicit CallInProgress(const char* name)
    {
        current_call.number.store(current_call.number.load(std::memory_order_relaxed) + 1,
                                  std::memory_order_relaxed);
        current_call.name.store(name, std::memory_order_relaxed);
    }
    ~CallInProgress() { current_call.name.store(nullptr, std::memory_order_relaxed); }
    CallInProgress(const CallInProgress&) = delete;
    CallInProgress& operator=(const CallInProgress&) = delete;
};

} // namespace platform
