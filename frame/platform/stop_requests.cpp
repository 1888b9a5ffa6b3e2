#include "frame/platform/stop_requests.h"

#include <algorithm>
#include <charconv>

namespace platform
{

void Notice::add(std::string_view text)
{
    size_ += text.copy(text_.data() + size_, text_.size() - size_);
}

void Notice::add_seconds(std::int64_t milliseconds)
{
    std::array<char, 24> digits = {};
    const auto add_number = [&](std::int64_t number) {
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        add({digits.data(), static_cast<std::size_t>(end - digits.data())});
    };
    const std::int64_t seconds = milliseconds / 1000;
    add_number(seconds);
    if (seconds < 10) {
        add(".");
        add_number(milliseconds % 1000 / 100);
    }
    add(" s");
}

void StopRequests::request(int number)
{
    int none = 0;
    number_.compare_exchange_strong(none, number);
}

std::int64_t StopRequests::waiting_since(std::int64_t now_ms) const
{
    const unsigned under_way = current_call.name != nullptr ? 1 : 0;
    if (calls() == calls_at_look_ + under_way)
        return look_ms_;
    return number_ != 0 && calls() == calls_at_wish_ ? wish_ms_ : now_ms;
}

StopRequests::Wait StopRequests::current_wait(std::int64_t now_ms) const
{
    constexpr std::int64_t long_ms = 300; // no call of a sound instrument takes that long
    if (now_ms - waiting_since(now_ms) < long_ms)
        return Wait::none;
    if (current_call.name != nullptr)
        return Wait::call;
    return number_ != 0 && files_ > 0 ? Wait::file : Wait::none;
}

void StopRequests::describe(Wait wait, std::int64_t now_ms)
{
    notice_.clear();
    const char* call = current_call.name;
    notice_.add("Waiting for ");
    notice_.add(wait == Wait::call && call != nullptr ? call : "a file to take what is written");
    notice_.add(" since ");
    notice_.add_seconds(now_ms - waiting_since(now_ms));
    if (protected_)
        notice_.add("; outputs may still be on, Ctrl-C again leaves them so");
    else if (wait == Wait::call)
        notice_.add("; Ctrl-C again leaves the instrument as it is");
    else
        notice_.add("; Ctrl-C again ends the program at once");
    warned_ = true;
    warned_call_ = calls();
}

StopRequests::Answer StopRequests::take(int number, std::int64_t now_ms, bool from_system)
{
    const Wait wait = current_wait(now_ms);
    const bool is_first = number_ == 0;
    if (!is_first && (now_ms - wish_ms_ < same_wish_ms || (from_system && number == number_)))
        return Answer::nothing;
    request(number);
    wish_ms_ = now_ms;
    calls_at_wish_ = calls();
    if (is_first && wait == Wait::none)
        return Answer::in_order;
    if (is_first) {
        describe(wait, now_ms);
        return Answer::tell;
    }
    if (!protected_)
        return Answer::at_once;
    if (wait == Wait::none) {
        notice_.clear();
        notice_.add("Settings are being restored first");
        return Answer::tell;
    }
    if (warned_ && warned_call_ == calls())
        return Answer::at_once;
    describe(wait, now_ms);
    return Answer::tell;
}

bool StopRequests::remind(std::int64_t now_ms)
{
    const Wait wait = current_wait(now_ms);
    const bool told = warned_ && warned_call_ == calls();
    if (number_ == 0 || wait == Wait::none || told)
        return false;
    describe(wait, now_ms);
    return true;
}

} // namespace platform
