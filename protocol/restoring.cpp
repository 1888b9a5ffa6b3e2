#include "protocol/restoring.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"
#include "protocol/sampling.h"

#include <array>
#include <cstddef>
#include <exception>
#include <optional>

namespace
{

/// For what must not keep the restoring from its turn, not even when memory runs out.
template <class Step>
bool guarded(Step step)
{
    try {
        return step();
    } catch (const std::exception&) {
        return false;
    }
}

bool purge_communication_port(Report& report)
{
    report.paragraph("Trying to restore the communication...");
    const std::int64_t start_ms = platform::tick_ms();
    if (!call(LIB(Purge)))
        return false;
    report.text(formatted("Communication has been restored within %.1lfs",
                          static_cast<double>(platform::tick_ms() - start_ms) * 0.001));
    return true;
}

/// Switches the device off. Only what reads back is believed.
Failure attempt_to_disable()
{
    std::uint8_t enabled = 1;
    if (const Failure failed = attempt(LIB(SetEnable), std::uint8_t{0}))
        return failed;
    if (const Failure failed = attempt(LIB(GetEnable), &enabled))
        return failed;
    return enabled == 0 ? Failure{} : Failure{LIB(SetEnable).name()};
}

/// Gives the settings back, over a link that may be failing.
class Restoring
{
public:
    Restoring(Report& report, const ConfigRecord& saved) : report_(report), saved_(saved) {}

    /// Tries for a while. True when it succeeded at once; a failure stays a failure.
    bool run(InstrumentState& state)
    {
        state = InstrumentState::unknown;
        bool restored = restore();
        const bool at_once = restored;
        if (!restored) {
            (void)guarded([&] { return purge_communication_port(report_); });
            restored = restore() || try_again(state);
        }
        if (restored)
            state = InstrumentState::restored;
        (void)guarded([&] {
            report_.text(restored ? report_text::settings_restored
                                  : "Current configuration data could not be restored",
                         restored ? Color::label : Color::bad);
            return true;
        });
        return at_once;
    }

private:
    bool restore()
    {
        (void)guarded([] {
            // Kept: to give the device its settings is "Saving", to read them "Loading".
            progress("Saving current configuration data:\n");
            return true;
        });
        return guarded([&] { return call(LIB(SetCurrentConfig), &saved_); });
    }

    /// Disables the device first, so that nothing is on meanwhile. The failures of the first round
    /// are reported; later ones are the same.
    bool try_again(InstrumentState& state)
    {
        constexpr std::int64_t patience_ms = 10'000;
        constexpr std::int64_t pause_ms = 250;
        const std::int64_t give_up_ms = platform::tick_ms() + patience_ms;
        if (guarded([] { return succeeded(attempt_to_disable()); }))
            state = InstrumentState::disabled;
        (void)guarded([&] {
            report_.text(formatted("Trying again for %ds...", static_cast<int>(patience_ms / 1000)),
                         Color::warning);
            console.flush();
            return true;
        });
        while (platform::tick_ms() < give_up_ms) {
            platform::rest_ms(pause_ms);
            (void)attempt(LIB(Purge));
            if (!attempt(LIB(SetCurrentConfig), &saved_))
                return true;
            if (state != InstrumentState::disabled && !attempt_to_disable())
                state = InstrumentState::disabled;
        }
        return false;
    }

    Report& report_;
    const ConfigRecord& saved_;
};

struct StateWords {
    const char* text;
    Color color;
};

/// In the order of InstrumentState.
constexpr std::array<StateWords, 4> state_words = {{
    {"untouched", Color::good},
    {"settings restored", Color::good},
    {"SETTINGS NOT RESTORED, but the device has been disabled as a last resort", Color::bad},
    {"UNKNOWN, OUTPUTS MAY STILL BE ON! The settings could not be restored", Color::bad},
}};

/// What the file is told when nobody restores the settings any more.
std::string last_words(platform::ForcedEnd end)
{
    const char* const blocked = platform::current_call.name;
    std::string text = "\n";
    if (end == platform::ForcedEnd::crash)
        text += report_text::first_error + std::string{"the program has failed\n\n"};
    else if (blocked != nullptr)
        text += report_text::first_error + std::string{blocked} + ": no answer\n\n";
    const auto unknown = static_cast<std::size_t>(InstrumentState::unknown);
    return text + report_text::aborted + '\n' + report_text::instrument_state + ":\t" +
           state_words[unknown].text + '\n';
}

} // namespace

void report_state(Report& report, InstrumentState state)
{
    if (state == InstrumentState::untouched)
        return;
    const StateWords& words = state_words[static_cast<std::size_t>(state)];
    report.item(
        {.label = report_text::instrument_state, .value = words.text, .color = words.color});
    if (state == InstrumentState::disabled || state == InstrumentState::unknown)
        note_alarm(report_text::instrument_state, words.text);
}

bool run_on_saved_settings(Report& report, InstrumentState& state,
                           const std::function<bool()>& steps)
{
    progress("Loading current configuration data:\n");
    ConfigRecord saved{};
    if (!call(LIB(GetCurrentConfig), &saved))
        return false;
    report.text(report_text::settings_saved);
    report.set_last_words(last_words);
    const platform::ProtectedRun until_restored;
    const bool passed = guarded(steps);
    // A terminal or a pipe keeps nobody waiting; a file on a disk that hangs would.
    std::optional<platform::HeldOutput> until_told;
    if (!platform::output_is_terminal())
        until_told.emplace();
    report.indent(false);
    report.end_section();
    if (!passed)
        (void)guarded([&] { return purge_communication_port(report); });
    return Restoring{report, saved}.run(state) && passed;
}
