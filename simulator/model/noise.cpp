#include "simulator/model/noise.h"

namespace simulator
{

double with_noise(const Instrument& instrument, double mean, double amplitude, Noise channel,
                  std::int64_t sample)
{
    if (!instrument.physical.noise)
        return mean;
    std::uint64_t mixed = static_cast<std::uint64_t>(sample) * 0x9E37'79B9'7F4A'7C15U +
                          static_cast<unsigned>(channel) * 0xD1B5'4A32'D192'ED03U;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58'476D'1CE4'E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D0'49BB'1331'11EBU;
    mixed ^= mixed >> 31;
    const double unit_interval = static_cast<double>(mixed >> 11) * 0x1p-53;
    return mean + amplitude * (2 * unit_interval - 1);
}

} // namespace simulator
