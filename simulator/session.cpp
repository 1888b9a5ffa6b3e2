#include "simulator/session.h"

#include "simulator/host.h"
#include "simulator/model/operation.h"
#include "simulator/model/status.h"
#include "simulator/model/the_instrument.h"
#include "simulator/scenario/scenario.h"
#include "simulator/state_file.h"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr std::uint32_t default_data_rate = 230'400;
/// A state is waited for until the disk has it, but in a burst of changes not for each: that long
/// after a wait the next ones are left to the operating system.
constexpr std::int64_t durable_every_us = 1'000'000;
/// A state that is older is written again at the end of the connection.
constexpr std::int64_t old_after_us = 60'000'000;

struct Session {
    bool open = false;
    std::string state_path; ///< empty = the state is kept in this process alone
    std::uint32_t data_rate = default_data_rate;
    std::int64_t durable_at_us = 0; ///< monotonic: when the next change is waited for
    std::int64_t saved_at_us = 0;   ///< monotonic: the last writing, or the opening
    bool unsafe = false;            ///< the disk may not have the last change yet
};

Session session;

Failure failed(Failure failure, std::string text)
{
    explain(std::move(text));
    return failure;
}

/// Finds out where the state of a port is kept, by its one name; empty = nowhere, as was asked for.
Failure find_state_path(std::uint8_t port)
{
    const std::optional<std::string> named = host::environment("KOV_SIMULATOR_STATE");
    session.state_path.clear();
    if (named == "none")
        return Failure::none;
    const std::string path = named ? *named : host::default_state_path(port);
    if (path.empty())
        return failed(Failure::state_file,
                      "no folder is known for the instrument's state; KOV_SIMULATOR_STATE may name "
                      "a file, or none");
    session.state_path = host::real_name(path);
    return Failure::none;
}

Failure lock_port(std::uint8_t port)
{
    std::int64_t holder = 0;
    std::string problem;
    switch (host::lock(session.state_path, holder, problem)) {
    case host::Locking::done:
        return Failure::none;
    case host::Locking::held:
        return failed(Failure::port_in_use,
                      "COM" + std::to_string(port) + " is used by another program" +
                          (holder != 0 ? ", process " + std::to_string(holder) : ""));
    case host::Locking::failed:
        break;
    }
    return failed(Failure::state_file, "cannot lock '" + session.state_path + ".lock': " + problem);
}

Failure damaged_state()
{
    const std::optional<std::string> name = host::set_aside(session.state_path);
    if (!name)
        return failed(Failure::state_file, "the state file '" + session.state_path +
                                               "' is damaged and cannot be set aside");
    return failed(Failure::state_file, "the state file '" + session.state_path +
                                           "' was damaged and is now '" + *name +
                                           "'; the next opening starts a new instrument");
}

/// The controller looks for its modules whenever somebody connects.
void find_modules(Instrument& instrument)
{
    refresh_presence(instrument);
    for (unsigned unit = 0; unit < unit_count; ++unit)
        scan(instrument, unit);
}

/// Brings the instrument that was left in the state file, or a new one where there is none.
Failure find_instrument()
{
    Instrument& instrument = the_instrument();
    const std::int64_t wall_us = host::wall_clock_us();
    std::string bytes;
    std::string problem;
    switch (host::read_file(session.state_path, bytes, problem)) {
    case host::Reading::failed:
        return failed(Failure::state_file, "cannot read '" + session.state_path + "': " + problem);
    case host::Reading::missing: {
        Physical physical = std::move(instrument.physical);
        make_new(instrument, wall_us);
        instrument.changed = true; // its state file is yet to be made
        instrument.physical = std::move(physical);
        break;
    }
    case host::Reading::done:
        if (!read_state(instrument, bytes))
            return damaged_state();
        break;
    }
    find_modules(instrument);
    refresh(instrument);
    // A clock that was set back cannot take the instrument back.
    set_clock_us(std::max(wall_us, instrument.now_us));
    (void)instrument_now();
    apply_scenario_settings();
    return Failure::none;
}

Failure save(bool closing)
{
    const Instrument& instrument = the_instrument();
    const std::int64_t now_us = host::monotonic_us();
    // The file tells how things go on from the last change, unless a scenario interfered. Now and
    // then the time is worth noting, for a clock that is set back.
    const bool needed = !closing || session.unsafe || instrument.interfered ||
                        now_us - session.saved_at_us > old_after_us;
    if (session.state_path.empty() || !needed)
        return Failure::none;
    const bool durable = closing || now_us >= session.durable_at_us;
    std::string problem;
    session.unsafe = true; // until it is written
    if (!host::replace_file(session.state_path, write_state(instrument), durable, problem))
        return failed(Failure::state_file, "cannot write '" + session.state_path + "': " + problem);
    session.unsafe = !durable;
    session.saved_at_us = now_us;
    if (durable)
        session.durable_at_us = host::monotonic_us() + durable_every_us; // waiting took time
    return Failure::none;
}

} // namespace

bool port_is_open()
{
    return session.open;
}

Failure open_port(std::uint8_t port)
{
    if (session.open)
        return Failure::already_open;
    if (port == 0)
        return Failure::bad_port;
    (void)instrument_now();
    Failure failure = find_state_path(port);
    if (failure != Failure::none)
        return failure;
    if (!session.state_path.empty()) {
        failure = lock_port(port);
        if (failure != Failure::none)
            return failure;
        failure = find_instrument();
        if (failure != Failure::none) {
            host::unlock();
            return failure;
        }
    }
    Instrument& instrument = instrument_now();
    find_modules(instrument);
    refresh(instrument);
    session.data_rate = default_data_rate;
    session.saved_at_us = host::monotonic_us();
    session.open = true;
    return Failure::none;
}

Failure close_port()
{
    session.open = false;
    Instrument& instrument = instrument_now();
    drop_written(instrument.memory);
    session.unsafe |= instrument.changed;
    instrument.changed = false;
    const Failure failure = save(true);
    if (!session.state_path.empty())
        host::unlock();
    return failure;
}

Failure save_changes()
{
    if (!session.open)
        return Failure::none;
    Instrument& instrument = the_instrument();
    if (!instrument.changed)
        return Failure::none;
    instrument.changed = false;
    return save(false);
}

std::uint32_t set_data_rate(std::uint32_t wanted)
{
    // A port divides its clock by whole numbers.
    constexpr std::uint32_t fastest = 921'600;
    constexpr std::uint32_t slowest_divisor = fastest / 50;
    const auto distance = [wanted](std::uint32_t divisor) {
        const std::uint32_t rate = fastest / divisor;
        return rate > wanted ? rate - wanted : wanted - rate;
    };
    std::uint32_t divisor = std::clamp(fastest / std::max(wanted, 1U), 1U, slowest_divisor);
    if (divisor < slowest_divisor && distance(divisor + 1) < distance(divisor))
        ++divisor;
    session.data_rate = fastest / divisor;
    return session.data_rate;
}

std::int64_t transfer_time_us(std::size_t bytes)
{
    constexpr std::int64_t bits_per_byte = 10; // with start and stop bit
    return static_cast<std::int64_t>(bytes) * bits_per_byte * 1'000'000 / session.data_rate;
}

void reset_session()
{
    if (session.open && !session.state_path.empty())
        host::unlock();
    session = Session{};
    make_the_instrument();
}

} // namespace simulator
