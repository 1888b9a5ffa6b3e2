#include "controller/status_words.h"

Word overall_state_word(std::uint16_t code)
{
    constexpr std::array<const char*, 6> errors = {
        "Error: General fault ", "Error: Modules       ", "Error: Supply voltage",
        "Error: Too cold      ", "Error: Overheating   ", "Error: Interlock     ",
    };
    if (code == overall_state::on)
        return {"On                   ", Color::good};
    if (code == overall_state::stand_by)
        return {"Stand-by             ", Color::good};
    if (code >= overall_state::first_error && code <= overall_state::last_error)
        return {errors[code - overall_state::first_error], Color::bad};
    return {"Unknown state        ", Color::value};
}

Word temperature_word(std::uint8_t state, int hot_bit, int cold_bit)
{
    if ((state >> hot_bit & 1) != 0)
        return {"hot ", Color::hot};
    if ((state >> cold_bit & 1) != 0)
        return {"cold", Color::cold};
    return ok_word;
}
