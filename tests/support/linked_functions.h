/// The functions of the device library that a test is linked to.
#pragma once

#include <map>
#include <string_view>

using LinkedFunction = void (*)();

extern const std::map<std::string_view, LinkedFunction> linked_functions;
