# The functions of the device library by name (KOV_FUNCTIONS), and a source that finds them where a
# program is linked to them instead of loading a library (KOV_LINKED_FUNCTIONS).
set(interface ${CMAKE_SOURCE_DIR}/devlib/COM-KOV-CTRL.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${interface})
file(STRINGS ${interface} prototypes REGEX "^COM_KOV_CTRL_API ")
set(KOV_FUNCTIONS "")
set(rows "")
foreach(prototype IN LISTS prototypes)
  string(REGEX REPLACE "^.*(COM_KOV_CTRL_[A-Za-z]+)\\(.*$" "\\1" function "${prototype}")
  list(APPEND KOV_FUNCTIONS ${function})
  string(APPEND rows
    "    {\"${function}\", reinterpret_cast<LinkedFunction>(${function})},\n")
endforeach()
set(KOV_LINKED_FUNCTIONS ${CMAKE_BINARY_DIR}/linked_functions.cpp)
file(CONFIGURE OUTPUT ${KOV_LINKED_FUNCTIONS} @ONLY CONTENT
"#include \"tests/support/linked_functions.h\"

#include \"devlib/COM-KOV-CTRL.h\"

const std::map<std::string_view, LinkedFunction> linked_functions = {
@rows@};
")
