/// A file that is written beside the program: whoever writes it never waits for a disk that hangs
/// or for the reader of a pipe. For what is written while something dangerous is switched on.
#pragma once

#include "frame/platform/platform.h"

#include <string>
#include <string_view>

class BackgroundFile
{
public:
    BackgroundFile() = default;
    ~BackgroundFile();
    BackgroundFile(const BackgroundFile&) = delete;
    BackgroundFile& operator=(const BackgroundFile&) = delete;

    /// As OutputFile::replace(); this may wait.
    [[nodiscard]] bool replace(const char* name);

    /// Takes bytes, to be written by the next flush() at the latest.
    void write(std::string_view bytes);

    /// What stands at the file's end when a protected run is left on the spot, if that is possible
    /// within a moment. Any thread may ask for it.
    using LastWords = std::string (*)(platform::ForcedEnd end);
    void set_last_words(LastWords last_words);

    /// Has everything written. False when something could not be: what fails later is told by the
    /// next call. Waits a moment, so that this is mostly the next one; not again until what hangs
    /// goes on.
    [[nodiscard]] bool flush();

    /// Waits until everything is written and the file closed, and tells the user when that takes
    /// long. A request to end the program gives the file up. False when something was not written.
    /// Only a complete one lets go the file that it replaces.
    [[nodiscard]] bool close(bool complete);

    /// True when a file was given up whose writing may still go on: the program must end without
    /// the system's clean-up of files, which would wait for it.
    [[nodiscard]] static bool any_given_up();

private:
    struct Job;

    [[nodiscard]] bool wait_for_end();
    void forget_last_words();
    void give_up();

    std::string name_;
    Job* job_ = nullptr;
    bool hangs_ = false;
};
