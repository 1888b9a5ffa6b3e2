/// Functions with a module address.
#pragma once

#include "simulator/library/call.h"
#include "simulator/library/units.h"

namespace simulator
{

/// Runs `work(instrument, unit)` for the unit that answers at an address.
template <Name name, typename Work, typename... Results>
std::int32_t call_unit(std::uint32_t address, const Work& work, Results... results)
{
    return call<name>(
        [&](Instrument& instrument) {
            unsigned unit = 0;
            const Failure failure = find_unit(instrument, address, unit);
            if (failure == Failure::none)
                work(instrument, unit);
            return failure;
        },
        address, results...);
}

} // namespace simulator
