/// What the companion's pages have in common: one file, nothing outside, light and dark, on paper.
#pragma once

#include "companion/output.h"

namespace companion
{

/// Up to the body; `head` is markup of the page's own.
void begin_page(TextFile& file, const std::string& title, const std::string& head = {});
void end_page(TextFile& file);

} // namespace companion
