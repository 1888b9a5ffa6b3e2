# GoogleTest for Windows, from Debian's sources, and how the tests are run there (under Wine on other
# systems): each program as a whole, since its start takes a while. What needs libvterm or
# pseudo-terminals is left out; tests/end_to_end has its own way to run the Windows program.
set(KOV_GOOGLETEST /usr/src/googletest CACHE PATH "Sources of GoogleTest")
set(INSTALL_GTEST OFF)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW) # its options heed the line above
add_subdirectory(${KOV_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(target IN ITEMS gtest gtest_main gmock gmock_main)
  target_compile_options(${target} PRIVATE -w)
  get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
  set_target_properties(${target} PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${folders}")
endforeach()

if(NOT MSVC)
  add_compile_options(-O0) # sooner built, and quick enough
endif()
# Signals have these numbers in the program's exit status, on this system, too.
add_compile_definitions(SIGHUP=1 SIGQUIT=3 SIGKILL=9 SIGPIPE=13)

# These limit the length of files, link to a device, remove files that are open, or use the longest
# names of other systems.
set(not_here MemoryImage.Failures TestProtocol.AFullDiskFailsTheStepsButNotTheRestoring
  Recording.FailsWhenSomebodyTakesItsFileAway
  OutputFile.ShortensANameThatHasNoRoomForOneMoreCharacter)

function(add_windows_tests)
  target_sources(unit_tests PRIVATE frame/terminal/console_keys_test.cpp
    ${CMAKE_SOURCE_DIR}/frame/platform/windows/keys.cpp
    ${CMAKE_SOURCE_DIR}/frame/platform/windows/screen.cpp)
  list(JOIN not_here ":" left_out)
  foreach(program IN ITEMS unit_tests simulator_tests simulator_host_tests)
    target_link_options(${program} PRIVATE -static)
    add_test(NAME ${program} COMMAND ${program} --gtest_brief=1 --gtest_filter=-${left_out})
  endforeach()
endfunction()
