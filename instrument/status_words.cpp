#include "instrument/status_words.h"

#include "instrument/words.h"

ColoredText overall_state_word(std::uint16_t code)
{
    switch (code) {
    case overall_state::on:
        return {"On                   ", Color::good};
    case overall_state::stand_by:
        return {"Stand-by             ", Color::good};
    case overall_state::general_fault:
        return {"Error: General fault ", Color::bad};
    case overall_state::modules:
        return {"Error: Modules       ", Color::bad};
    case overall_state::supply_voltage:
        return {"Error: Supply voltage", Color::bad};
    case overall_state::too_cold:
        return {"Error: Too cold      ", Color::bad};
    case overall_state::overheating:
        return {"Error: Overheating   ", Color::bad};
    case overall_state::interlock:
        return {"Error: Interlock     ", Color::bad};
    default:
        return {"Unknown state        ", Color::value};
    }
}

ColoredText TemperatureField::word(std::uint8_t state) const
{
    if ((state >> hot_bit & 1) != 0)
        return {"hot ", Color::hot};
    if ((state >> cold_bit & 1) != 0)
        return {"cold", Color::cold};
    return ok_word;
}
