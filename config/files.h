/// Configurations in files: the current one, one set, all sets. What cannot be read whole is not
/// sent; what could not be written is told, and the file stays as far as it came.
#pragma once

#include "frame/switches.h"

void save_current_configuration_to_file(const Given&);
void load_current_configuration_from_file(const Given&);

/// With a number that set, else all sets that are active, valid or not.
void save_sets(const Given&);

/// With a number that set, from the section of its own number, else all sets that the file holds.
/// They become valid and active.
void load_sets(const Given&);

/// Sets the current configuration to zeros, without asking.
void reset_current_configuration(const Given&);
