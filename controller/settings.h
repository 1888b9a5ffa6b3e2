/// The controller's settings: device enable, interlock enable masks, function of the slide switch
/// 'Fan'; its restart. The setting forms show what was sent, once the library has accepted it; they
/// read nothing back, and pass any value on as it is.
#pragma once

#include "frame/bit_fields.h"
#include "frame/format.h"
#include "frame/switches.h"
#include "instrument/status_words.h"

#include <array>

/// An interlock enable mask, 8 bits, the same for the HV-supplies and the heat-controller: set =
/// the input acts on the modules of that kind.
inline constexpr std::array interlock_mask_fields = {
    BitField{"  HTCTR#1: ", interlock_bit::heat_controller_1, on_word, off_word},
    BitField{"  HTCTR#2: ", interlock_bit::heat_controller_2, on_word, off_word},
    BitField{"  front: ", interlock_bit::front, on_word, off_word},
    BitField{"  rear: ", interlock_bit::rear, on_word, off_word},
};

/// Function of the slide switch 'Fan', 8 bits: whether the software overrides it, and with what.
inline constexpr std::array fan_switch_fields = {
    BitField{", override: ", 0, on_word, off_word},
    BitField{", software control: ", 1, on_word, off_word},
};
static_assert(well_formed(interlock_mask_fields, 8) && well_formed(fan_switch_fields, 8));

void enable_device(const Given&);
void disable_device(const Given&);
void show_enable_state(const Given&);

void set_hv_supply_interlock_mask(const Given&);
void show_hv_supply_interlock_mask(const Given&);

void set_heat_controller_interlock_mask(const Given&);
void show_heat_controller_interlock_mask(const Given&);

void set_fan_switch_function(const Given&);
void show_fan_switch_function(const Given&);

void restart_controller(const Given&);
