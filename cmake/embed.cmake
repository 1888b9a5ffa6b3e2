# check_sums(FOLDER): stops when a file differs from what FOLDER/SHA256SUMS says of it.
# embed(SOURCE HEADER NAME=FILE...): writes SOURCE, which defines the texts that HEADER declares as
# companion::NAME, with the bytes of the files.
function(check_sums folder)
  file(STRINGS ${folder}/SHA256SUMS lines)
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^([0-9a-f]+)  (.*)$" matched "${line}")
    set(wanted ${CMAKE_MATCH_1})
    set(file ${folder}/${CMAKE_MATCH_2})
    file(SHA256 ${file} sum)
    if(NOT sum STREQUAL wanted)
      message(FATAL_ERROR "${file} is not what ${folder}/SHA256SUMS says")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  endforeach()
endfunction()

function(embed source header)
  set(text "// Made by cmake/embed.cmake.\n#include \"${header}\"\n")
  foreach(pair IN LISTS ARGN)
    string(REGEX MATCH "^([^=]+)=(.*)$" matched "${pair}")
    set(name ${CMAKE_MATCH_1})
    set(file ${CMAKE_MATCH_2})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(READ ${file} bytes HEX)
    string(LENGTH "${bytes}" length)
    math(EXPR length "${length} / 2")
    string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND text "namespace\n{\nconstexpr char bytes_of_${name}[] = {\n${bytes}};\n}\n"
      "const std::string_view companion::${name} = {bytes_of_${name}, ${length}};\n")
  endforeach()
  file(CONFIGURE OUTPUT ${source} CONTENT "${text}" @ONLY) # touched only when it changes
endfunction()
