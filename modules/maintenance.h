/// Commands that look after the modules: which are there, are they the ones that were saved, and
/// restarting, rescanning and purging them.
#pragma once

#include "frame/switches.h"

/// Lists the detected modules.
void list_modules(const Given&);

/// Lists what the last scan found beside what is saved, and offers to save it when it differs.
void check_modules(const Given&);

void update_presence(const Given&);
void rescan_all_modules(const Given&);

// Of one module or all. "All" restarts and purges the slots alone, but rescans the base unit, too.
void rescan_module(const Given&);
void restart_module(const Given&);
void show_module_buffer_state(const Given&);
void purge_module(const Given&);
