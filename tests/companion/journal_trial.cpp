#include "tests/companion/journal_trial.h"

#include "companion/journal/library/entry.h"
#include "tests/support/linked_functions.h"
#include "tests/support/virtual_time.h"

#include <functional>

namespace journal
{

extern const std::array<LibraryFunctionPointer, devlib::function_count> entries;

namespace
{

std::function<Returned(const Call&)> answering;

const Clock virtual_clock = {
    .now =
        [] {
            return Moment{virtual_time::wall_clock_start_ms * 1000 + virtual_time::now_us(), 0};
        },
    .steady_us = virtual_time::now_us,
    .rest_us = virtual_time::advance_us};

} // namespace

Returned answer(const Call& call)
{
    return answering(call);
}

} // namespace journal

const OfferedLibrary& journal_entries = journal::entries;

TappedCalls::TappedCalls()
    : text_{journal::first_line({.command_line = {"KOV-Controller", "3"}, .library = "linked"})},
      recorder_{journal::virtual_clock, [this](std::string_view line) {
                    text_ += line;
                    return true;
                }}
{
    journal::answering = [this](const journal::Call& call) {
        const auto linked = [](std::string_view name) { return linked_functions.at(name); };
        return recorder_.pass_on(call, linked(call.info().full_name),
                                 linked("COM_KOV_CTRL_GetErrorMessage"));
    };
}

TappedCalls::~TappedCalls()
{
    journal::answering = nullptr;
}

std::string TappedCalls::journal()
{
    recorder_.finish();
    return text_;
}

ReplayedCalls::ReplayedCalls(const std::string& journal)
    : file_{(write_file(name_.name(), journal), std::fopen(name_.name().c_str(), "rb")),
            std::fclose},
      player_{file_.get(), journal::virtual_clock, true}
{
    journal::answering = [this](const journal::Call& call) {
        journal::Returned returned = {.status = -1};
        std::string difference;
        if (!player_.answer(call, returned, difference) && difference_.empty())
            difference_ = difference;
        return returned;
    };
}

ReplayedCalls::~ReplayedCalls()
{
    journal::answering = nullptr;
}

std::string ReplayedCalls::difference()
{
    return difference_.empty() ? player_.left() : difference_;
}
