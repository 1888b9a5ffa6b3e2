#include "frame/files/background_file.h"

#include "frame/files/data_file.h"
#include "frame/platform/platform.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// What program and writer share, under its lock; but the file is the writer's alone.
struct BackgroundFile::Job {
    OutputFile file;
    std::thread writer;
    /// Each changes it. Not under the lock: a signal handler has one, too.
    std::atomic<unsigned> orders = 0;
    std::atomic<LastWords> last_words = nullptr;
    std::atomic<bool> ends_now = false; ///< the last words are due
    std::atomic<bool> has_said_them = false;
    std::atomic<platform::ForcedEnd> forced_end = platform::ForcedEnd::asked_for;
    std::string former_notice;
    platform::LastAct last_act{};

    std::mutex mutex;
    std::condition_variable news;
    std::string bytes; ///< to be written
    bool is_idle = true;
    bool is_to_end = false;
    bool is_complete = false;
    bool has_ended = false;
    bool failed = false;

    /// What the writer does until the end.
    void write();

    void order()
    {
        ++orders;
        orders.notify_one();
    }

private:
    void carry_out();
    [[nodiscard]] bool acquire(std::unique_lock<std::mutex>& lock) const;
    void say_last_words();
};

namespace
{

/// What their writers may still hold. Never freed.
std::vector<void*>& jobs_given_up()
{
    static auto* jobs = new std::vector<void*>;
    return *jobs;
}

/// The job of the file that wants last words; null = none.
constinit std::atomic<void*> job_with_last_words = nullptr;

} // namespace

void BackgroundFile::Job::write()
{
    while (!has_ended) {
        const unsigned known = orders;
        carry_out();
        if (!has_ended)
            orders.wait(known);
    }
}

void BackgroundFile::Job::carry_out()
{
    std::unique_lock lock{mutex, std::defer_lock};
    if (!acquire(lock)) {
        say_last_words();
        return;
    }
    const std::string taken = std::exchange(bytes, {});
    const bool ends = is_to_end;
    is_idle = taken.empty() && !ends;
    const bool has_failed = failed;
    lock.unlock();
    bool good = taken.empty() || (file.write(taken) && file.flush());
    if (ends_now)
        say_last_words();
    if (ends)
        good = (is_complete && good && !has_failed ? file.complete() : file.close()) && good;
    if (!acquire(lock))
        return;
    failed = failed || !good;
    is_idle = bytes.empty();
    has_ended = ends;
    news.notify_all();
}

/// False when the last words are due and the program has failed while it had the lock: what it
/// shares cannot be trusted then, and the lock never comes.
bool BackgroundFile::Job::acquire(std::unique_lock<std::mutex>& lock) const
{
    constexpr std::chrono::milliseconds interval{1};
    constexpr int last_looks = 10;
    for (int looks = 0; !lock.try_lock();) {
        if (ends_now && ++looks > last_looks)
            return false;
        std::this_thread::sleep_for(interval);
    }
    return true;
}

void BackgroundFile::Job::say_last_words()
{
    if (has_said_them)
        return;
    if (const LastWords words = last_words; words != nullptr && file.write(words(forced_end)))
        (void)file.flush();
    file.former().mark();
    has_said_them = true;
}

BackgroundFile::~BackgroundFile()
{
    (void)close(false);
}

bool BackgroundFile::replace(const char* name)
{
    auto job = std::make_unique<Job>();
    if (!job->file.replace(name))
        return false;
    name_ = name;
    job_ = job.release();
    job_->writer = platform::start_thread([job = job_] { job->write(); });
    return true;
}

void BackgroundFile::write(std::string_view bytes)
{
    if (job_ == nullptr)
        return;
    const std::lock_guard lock{job_->mutex};
    job_->bytes += bytes;
}

void BackgroundFile::set_last_words(LastWords last_words)
{
    if (job_ == nullptr)
        return;
    const auto say_them = [](platform::ForcedEnd end) { // which a signal handler may do
        constexpr std::chrono::milliseconds interval{1};
        constexpr int intervals = 100;
        auto* const job = static_cast<Job*>(job_with_last_words.load());
        if (job == nullptr)
            return;
        job->forced_end = end;
        job->ends_now = true;
        job->order();
        for (int i = 0; i < intervals && !job->has_said_them; ++i)
            std::this_thread::sleep_for(interval);
    };
    job_->last_words = last_words;
    job_->former_notice = job_->file.former().notice();
    job_->last_act = {.told = job_->former_notice, .act = say_them};
    job_with_last_words = job_;
    platform::set_last_act(&job_->last_act);
}

bool BackgroundFile::flush()
{
    constexpr std::chrono::milliseconds patience{100};
    if (job_ == nullptr)
        return true;
    std::unique_lock lock{job_->mutex};
    if (!job_->bytes.empty()) {
        job_->is_idle = false;
        job_->order();
    }
    const auto is_done = [this] { return job_->is_idle || job_->failed; };
    hangs_ = hangs_ ? !is_done() : !job_->news.wait_for(lock, patience, is_done);
    return !job_->failed;
}

bool BackgroundFile::close(bool complete)
{
    if (job_ == nullptr)
        return true;
    {
        const std::lock_guard lock{job_->mutex};
        job_->is_to_end = true;
        job_->is_complete = complete;
        job_->order();
    }
    if (!wait_for_end()) {
        give_up();
        return false;
    }
    job_->writer.join();
    forget_last_words();
    const std::unique_ptr<Job> job{std::exchange(job_, nullptr)};
    return !job->failed;
}

bool BackgroundFile::wait_for_end()
{
    constexpr std::chrono::milliseconds moment{500};
    constexpr std::int64_t interval_ms = 50;
    constexpr std::int64_t last_patience_ms = 2'000;
    std::unique_lock lock{job_->mutex};
    if (job_->news.wait_for(lock, moment, [this] { return job_->has_ended; }))
        return true;
    const bool was_stopped = platform::stop_signal() != 0;
    const std::int64_t give_up_ms = platform::tick_ms() + last_patience_ms;
    lock.unlock();
    console.print(Color::warning, "Waiting for the data file '%s' to take what is written to it",
                  printable(name_).c_str());
    console.print("%s\n", was_stopped ? "" : "; Ctrl-C gives it up");
    console.flush();
    for (;;) {
        platform::rest_ms(interval_ms);
        lock.lock();
        const bool has_ended = job_->has_ended;
        lock.unlock();
        if (has_ended)
            return true;
        if (was_stopped ? platform::tick_ms() >= give_up_ms : platform::stop_signal() != 0)
            return false;
    }
}

void BackgroundFile::forget_last_words()
{
    if (job_with_last_words == job_) {
        platform::set_last_act(nullptr);
        job_with_last_words = nullptr;
    }
}

void BackgroundFile::give_up()
{
    forget_last_words();
    job_->file.former().tell();
    job_->writer.detach();
    jobs_given_up().push_back(std::exchange(job_, nullptr));
}

bool BackgroundFile::any_given_up()
{
    return !jobs_given_up().empty();
}
