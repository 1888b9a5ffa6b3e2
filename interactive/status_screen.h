/// The full-screen status display of the whole instrument. It only reads; Esc leaves it.
#pragma once

#include "frame/switches.h"

/// Runs the display until Esc, with the cursor hidden; needs an open session.
void run_status_screen();

/// The same as a switch.
void show_status_screen(const Given&);
