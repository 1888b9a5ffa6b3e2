/// Endurance tests of the communication: random data sets go to the controller or to its modules
/// until Esc is pressed or a transfer fails. A live line counts the cycles, a summary follows.
#pragma once

#include "frame/switches.h"

/// Data sets of up to `number` characters to the controller itself.
void test_controller(const Given&);

/// Data sets of up to `number` characters to the module at an address, or to all present ones in
/// random order.
void test_modules(const Given&);
