/// Session, communication control, error texts and communication tests.
#include "simulator/library/call.h"
#include "simulator/library/trace.h"
#include "simulator/library/units.h"
#include "simulator/model/measurements.h"
#include "simulator/model/operation.h"
#include "simulator/scenario/scenario.h"
#include "simulator/session.h"

#include <cstring>

using namespace simulator;

namespace
{

/// How long a controller takes to start again, and a module.
constexpr std::int64_t restart_us = 500'000;

/// Bytes that frame a data set of a communication test.
constexpr std::size_t frame_bytes = 2;

/// A data set goes there and comes back.
void exchange(const char* text)
{
    take_transfer_time_us(2 * transfer_time_us(std::strlen(text) + frame_bytes));
}

} // namespace

std::uint16_t COM_KOV_CTRL_GetSWVersion(void)
{
    constexpr std::size_t function = find_function("GetSWVersion");
    (void)call_steps::begin(function, {}); // never fails
    return call_steps::end_with_version(function, the_instrument().physical.library_version);
}

std::int32_t COM_KOV_CTRL_Open(std::uint8_t port)
{
    return call<"Open">(
        [&] {
            if (!scenario_problem().empty()) {
                explain(scenario_problem());
                return Failure::bad_scenario;
            }
            return open_port(port);
        },
        port);
}

std::int32_t COM_KOV_CTRL_Close(void)
{
    return call<"Close">([] { return close_port(); });
}

std::int32_t COM_KOV_CTRL_OpenDebugFile(const char* fileName)
{
    return call<"OpenDebugFile">(
        [&] {
            if (open_trace(fileName))
                return Failure::none;
            explain(std::string("cannot write the debug file '") + fileName + "'");
            return Failure::trace_file;
        },
        fileName);
}

std::int32_t COM_KOV_CTRL_CloseDebugFile(void)
{
    return call<"CloseDebugFile">(
        [] { return close_trace() ? Failure::none : Failure::trace_file; });
}

std::int32_t COM_KOV_CTRL_SetBaudRate(std::uint32_t* baud)
{
    return call<"SetBaudRate">([&] { *baud = set_data_rate(*baud); }, baud);
}

std::int32_t COM_KOV_CTRL_GetBufferState(std::uint8_t* empty)
{
    return call<"GetBufferState">(
        [&](Instrument& instrument) { *empty = instrument.physical.buffer_empty; }, empty);
}

std::int32_t COM_KOV_CTRL_Purge(void)
{
    return call<"Purge">([] {});
}

std::int32_t COM_KOV_CTRL_DevicePurge(std::uint8_t* purged)
{
    return call<"DevicePurge">(
        [&](Instrument& instrument) {
            Physical& physical = instrument.physical;
            physical.buffer_empty |= physical.purges;
            *purged = physical.purges;
        },
        purged);
}

std::int32_t COM_KOV_CTRL_Restart(void)
{
    return call<"Restart">([](Instrument& instrument) {
        restart(instrument);
        take_time_us(restart_us);
    });
}

const char* COM_KOV_CTRL_GetErrorMessage(void)
{
    return call_for_text<"GetErrorMessage">([] { return last_error_text(); });
}

std::int32_t COM_KOV_CTRL_GetIOState(std::uint32_t* state)
{
    return call<"GetIOState">([&] { *state = last_io_state(); }, state);
}

const char* COM_KOV_CTRL_GetIOStateMessage(std::uint32_t state)
{
    return call_for_text<"GetIOStateMessage">([&] { return io_state_text(state); }, state);
}

std::int32_t COM_KOV_CTRL_GetCommError(std::uint32_t* error)
{
    return call<"GetCommError">([&] { *error = last_comm_error(); }, error);
}

const char* COM_KOV_CTRL_GetCommErrorMessage(std::uint32_t error)
{
    return call_for_text<"GetCommErrorMessage">([&] { return comm_error_text(error); }, error);
}

std::int32_t COM_KOV_CTRL_Test(const char* text)
{
    return call<"Test">([&] { exchange(text); }, text);
}

std::int32_t COM_KOV_CTRL_TestModule(const char* text, std::uint32_t address)
{
    return call<"TestModule">(
        [&](Instrument& instrument) {
            unsigned unit = 0;
            const Failure failure = find_unit(instrument, address, unit);
            if (failure == Failure::none)
                exchange(text);
            return failure;
        },
        text, address);
}
