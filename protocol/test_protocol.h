/// The acceptance test: an unattended run through everything the instrument can do, with a report.
#pragma once

#include "frame/switches.h"

void create_test_protocol(const Given&);
