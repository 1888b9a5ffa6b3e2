#include "frame/files/background_file.h"

#include "frame/files/data_file.h"
#include "frame/platform/platform.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"

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

private:
    [[nodiscard]] bool end() { return is_complete && !failed ? file.complete() : file.close(); }
};

namespace
{

/// What their writers may still hold. Never freed.
std::vector<void*>& jobs_given_up()
{
    static auto* jobs = new std::vector<void*>;
    return *jobs;
}

} // namespace

void BackgroundFile::Job::write()
{
    std::unique_lock lock{mutex};
    while (!has_ended) {
        news.wait(lock, [this] { return !bytes.empty() || is_to_end; });
        const std::string taken = std::exchange(bytes, {});
        const bool ends = taken.empty();
        is_idle = false;
        lock.unlock();
        const bool good = ends ? end() : file.write(taken) && file.flush();
        lock.lock();
        failed = failed || !good;
        is_idle = bytes.empty();
        has_ended = ends;
        news.notify_all();
    }
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

bool BackgroundFile::flush()
{
    constexpr std::chrono::milliseconds patience{100};
    if (job_ == nullptr)
        return true;
    std::unique_lock lock{job_->mutex};
    if (!pending_.empty()) {
        job_->bytes += std::exchange(pending_, {});
        job_->is_idle = false;
        job_->news.notify_all();
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
        job_->bytes += std::exchange(pending_, {});
        job_->is_to_end = true;
        job_->is_complete = complete;
        job_->news.notify_all();
    }
    if (!wait_for_end()) {
        give_up();
        return false;
    }
    job_->writer.join();
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

void BackgroundFile::give_up()
{
    job_->writer.detach();
    jobs_given_up().push_back(std::exchange(job_, nullptr));
}

bool BackgroundFile::any_given_up()
{
    return !jobs_given_up().empty();
}
