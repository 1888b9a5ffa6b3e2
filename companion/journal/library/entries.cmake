# Sources made of the prototypes in the interface's header: each function as an entry of ours.
#   KOV_EXPORTED_ENTRIES  defines the functions themselves
#   KOV_ENTRY_TABLE       defines journal::entries, a pointer for each row of the table
set(interface ${CMAKE_SOURCE_DIR}/devlib/COM-KOV-CTRL.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${interface})
file(READ ${interface} header)
string(REPLACE ";" "@" header "${header}") # which separates the elements of a list
string(REGEX MATCHALL "COM_KOV_CTRL_API [a-z0-9_ *]*COM_KOV_CTRL_[A-Za-z]+\\([^)]*\\)@" prototypes "${header}")
set(functions "")
set(rows "")
foreach(prototype IN LISTS prototypes)
  string(REGEX MATCH "^COM_KOV_CTRL_API ([a-z0-9_ *]*)(COM_KOV_CTRL_[A-Za-z]+)\\(([^)]*)\\)@$" whole "${prototype}")
  set(result "${CMAKE_MATCH_1}")
  set(function ${CMAKE_MATCH_2})
  string(REGEX REPLACE "[ \n]+" " " parameters "${CMAKE_MATCH_3}")
  set(names "")
  if(NOT parameters STREQUAL "void")
    string(REPLACE "," ";" list "${parameters}")
    foreach(parameter IN LISTS list)
      string(REGEX MATCH "[A-Za-z0-9_]+$" name "${parameter}")
      list(APPEND names ${name})
    endforeach()
  endif()
  string(REPLACE ";" ", " names "${names}")
  set(entry "journal::Entry<devlib::find_function(\"${function}\"), decltype(&${function})>::call")
  string(APPEND functions "${result}${function}(${parameters})\n{\n    return ${entry}(${names});\n}\n\n")
  string(APPEND rows "    reinterpret_cast<journal::LibraryFunctionPointer>(${entry}),\n")
endforeach()
set(includes "#include \"companion/journal/library/entry.h\"\n#include \"devlib/COM-KOV-CTRL.h\"\n\n")
set(KOV_EXPORTED_ENTRIES ${CMAKE_BINARY_DIR}/exported_entries.cpp)
file(CONFIGURE OUTPUT ${KOV_EXPORTED_ENTRIES} @ONLY CONTENT "@includes@@functions@")
set(KOV_ENTRY_TABLE ${CMAKE_BINARY_DIR}/entry_table.cpp CACHE INTERNAL "")
file(CONFIGURE OUTPUT ${KOV_ENTRY_TABLE} @ONLY CONTENT "@includes@namespace journal
{
extern const std::array<LibraryFunctionPointer, devlib::function_count> entries;
const std::array<LibraryFunctionPointer, devlib::function_count> entries = {
@rows@};
}
")
