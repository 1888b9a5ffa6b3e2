/// What the companion's pages have in common: one file, nothing outside, light and dark, on paper.
#pragma once

#include "companion/output.h"

namespace companion
{

void begin_page(TextFile& file, const std::string& title);
void end_page(TextFile& file);

} // namespace companion
