/// What the units of a new instrument are: names, numbers, dates, versions, types.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

void default_identities(Physical& physical);

} // namespace simulator
