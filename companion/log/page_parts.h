/// What stands in every page, byte by byte as the files have it.
#pragma once

#include <string_view>

namespace companion
{

extern const std::string_view uplot_script, uplot_style, uplot_licence;
extern const std::string_view picture_script; ///< picture_page.js

} // namespace companion
