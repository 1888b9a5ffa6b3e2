/// What requests to end the program mean, and what is told about them: the same on every system.
/// All of it may run in a handler that breaks into anything: nothing is allocated, nothing is
/// locked.
#pragma once

#include "frame/platform/current_call.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform
{

struct LastAct;

/// A line that a handler composes.
class Notice
{
public:
    void clear() { size_ = 0; }
    void add(std::string_view text);
    /// Whole seconds, tenths below ten.
    void add_seconds(std::int64_t milliseconds);
    [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }

private:
    std::array<char, 200> text_ = {};
    std::size_t size_ = 0;
};

/// What a stop by Ctrl-Z, a crash and leaving a run on the spot are told by.
inline constexpr std::string_view not_stopped_notice =
    "Not stopped: outputs would stay on. Ctrl-C ends the run and restores the settings";
inline constexpr std::string_view crash_notice =
    "The program has failed: settings are not restored, outputs may still be on!";
inline constexpr std::string_view left_notice =
    "Settings are not restored, outputs may still be on!";

class StopRequests
{
public:
    enum class Answer {
        nothing,  ///< the same wish once more
        in_order, ///< the program ends when it notices; remind() is to be asked after a while
        tell,     ///< notice() says why it does not end yet
        at_once,
    };

    /// When remind() is to be asked; within this time a request is the same wish as the one before.
    static constexpr std::int64_t same_wish_ms = 500;

    /// A request by that signal. `from_system` for one that the system repeats of its own accord.
    Answer take(int number, std::int64_t now_ms, bool from_system);

    /// A while after a request: true when something keeps the program from ending; notice() says
    /// what.
    bool remind(std::int64_t now_ms);

    /// The program asks for an end itself.
    void request(int number);

    /// The signal that asked first, 0 while none has.
    [[nodiscard]] int number() const { return number_; }

    /// From the last look before a call on it is known how long the call lasts.
    void looked_at_clock(std::int64_t now_ms)
    {
        look_ms_.store(now_ms, std::memory_order_relaxed);
        calls_at_look_.store(calls(), std::memory_order_relaxed);
    }
    void protect(bool on) { protected_ = on; }
    [[nodiscard]] bool is_protected() const { return protected_; }
    void set_last_act(const LastAct* last_act) { last_act_ = last_act; }
    /// What is to be done when the program ends on the spot; null outside a protected run.
    [[nodiscard]] const LastAct* last_act() const
    {
        return protected_ ? last_act_.load() : nullptr;
    }
    /// One more or less of the files that may be pipes whose other end nobody reads; returns their
    /// number.
    int files_being_written(int change) { return files_ += change; }

    [[nodiscard]] const Notice& notice() const { return notice_; }

private:
    /// Waits that nobody knows of are none.
    enum class Wait { none, call, file };

    [[nodiscard]] static unsigned calls() { return current_call.number; }
    [[nodiscard]] Wait current_wait(std::int64_t now_ms) const;
    /// Since when the program has done nothing else; `now_ms` where nobody can tell.
    [[nodiscard]] std::int64_t waiting_since(std::int64_t now_ms) const;
    void describe(Wait wait, std::int64_t now_ms);

    std::atomic<int> number_ = 0;
    std::atomic<bool> protected_ = false;
    std::atomic<const LastAct*> last_act_ = nullptr;
    std::atomic<int> files_ = 0;
    std::atomic<std::int64_t> look_ms_ = 0;
    std::atomic<unsigned> calls_at_look_ = 0;
    // Of the handlers alone.
    std::int64_t wish_ms_ = 0; ///< of the last request
    unsigned calls_at_wish_ = 0;
    bool warned_ = false; ///< the way out has been offered
    unsigned warned_call_ = 0;
    Notice notice_;
};

} // namespace platform
