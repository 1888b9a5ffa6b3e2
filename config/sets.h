/// The configuration sets in the device's memory, 1..1023. Whatever destroys data asks first; only
/// "y" and "Y" are a yes.
#pragma once

#include "frame/switches.h"

/// The capital form saves the current configuration into a set, the lower form makes a set the
/// current configuration.
void copy_current_configuration(const Given&);

void set_name_of_set(const Given&);
void show_name_of_set(const Given&);

/// Deleting is a mark, which undeleting takes away. Without a number: of all sets.
void delete_sets(const Given&);
void undelete_sets(const Given&);

/// Fills one set or all with zeros; they are invalid then.
void wipe_out_sets(const Given&);

/// The capital form lists the deleted sets, the lower form the active ones.
void list_sets(const Given&);
