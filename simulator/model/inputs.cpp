#include "simulator/model/inputs.h"

namespace simulator
{

namespace
{

constexpr unsigned heater_inputs = bit(Input::heater1) | bit(Input::heater2);

/// Inputs with such a contact; the heat-controller's are there as long as it is.
template <typename Accepted>
unsigned inputs_with(const Instrument& instrument, const Accepted& accepted)
{
    unsigned inputs = 0;
    for (unsigned input = 0; input < input_count; ++input)
        inputs |= accepted(instrument.physical.inputs[input]) ? 1U << input : 0U;
    return works(instrument, 0) ? inputs : inputs & ~heater_inputs;
}

/// Inputs that are closed just now; a noisy one is, but was not all the time.
unsigned closed_now(const Instrument& instrument)
{
    return inputs_with(instrument, [](Contact contact) { return contact != Contact::open; });
}

/// The latched levels of some inputs, which latch anew.
unsigned take_latched(Instrument& instrument, unsigned inputs)
{
    const unsigned latched = closed_now(instrument) & instrument.last_inputs & inputs;
    const unsigned next = steadily_closed(instrument);
    instrument.last_inputs =
        static_cast<std::uint8_t>((instrument.last_inputs & ~inputs) | (next & inputs));
    return latched;
}

} // namespace

unsigned steadily_closed(const Instrument& instrument)
{
    return inputs_with(instrument, [](Contact contact) { return contact == Contact::closed; });
}

std::uint16_t read_interlock_word(Instrument& instrument)
{
    const unsigned now = closed_now(instrument);
    const unsigned latched = take_latched(instrument, 0x0F);
    unsigned word = instrument.status.interlock_results;
    word |= (now & 0x03U) << 8;
    word |= (latched & 0x03U) << 10;
    word |= (now & 0x0CU) << 10;
    word |= (latched & 0x0CU) << 12;
    return instrument.physical.forced_interlock_state.value_or(static_cast<std::uint16_t>(word));
}

std::uint8_t read_heater_interlocks(Instrument& instrument)
{
    const unsigned now = closed_now(instrument) & heater_inputs;
    const unsigned latched = take_latched(instrument, heater_inputs);
    return static_cast<std::uint8_t>(now | latched << 2);
}

std::uint8_t input_level(const Instrument& instrument, Input input)
{
    return (closed_now(instrument) & bit(input)) != 0;
}

} // namespace simulator
