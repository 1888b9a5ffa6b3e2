/// The controller, as the frame needs to know it.
#pragma once

#include "frame/device_facts.h"
#include "instrument/addresses.h"
#include "instrument/device_types.h"

inline constexpr DeviceFacts controller_facts = {.type = controller_device_type,
                                                 .highest_slot = highest_slot,
                                                 .base_unit_character = base_unit_character,
                                                 .all_modules_character = all_modules_character,
                                                 .read_address = read_address};
