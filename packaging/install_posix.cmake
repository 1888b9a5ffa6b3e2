# What is installed where (cmake --install), and the Debian package (tools/package.sh).
#
#   bin/KOV-Controller, bin/kov
#   lib/kov-controller/maker/                     for the maker's library, which is found first
#   lib/kov-controller/simulator/libCOM-KOV-CTRL.so
#   lib/kov-controller/tap/, lib/kov-controller/replay/    libraries of kov, of the same name
#   share/kov-controller/scenarios/               for the simulated instrument
#   share/man/man1/, share/doc/kov-controller/, and the completions of bash and zsh
include(GNUInstallDirs)

# Not below a folder of the machine's architecture: the program looks for it beside its own folder.
set(library_folder lib/kov-controller)
set(document_folder ${CMAKE_INSTALL_DATADIR}/doc/kov-controller)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(zsh_folder ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions) # where Debian's zsh looks
else()
  set(zsh_folder ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endif()

# install_compressed(FILE FOLDER NAME): as gzip does it without name and time.
find_program(GZIP gzip REQUIRED)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packaging)
function(install_compressed file folder name)
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/packaging/${name}.gz)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/packaging
    COMMAND ${GZIP} -9nc ${CMAKE_CURRENT_SOURCE_DIR}/${file} > ${compressed}
    DEPENDS ${file} VERBATIM)
  string(MAKE_C_IDENTIFIER "compressed_${name}" target)
  add_custom_target(${target} ALL DEPENDS ${compressed})
  install(FILES ${compressed} DESTINATION ${folder})
endfunction()

install(TARGETS KOV-Controller RUNTIME DESTINATION bin)
install(TARGETS COM-KOV-CTRL LIBRARY DESTINATION ${library_folder}/simulator
  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
install(DIRECTORY DESTINATION ${library_folder}/maker)
install(DIRECTORY simulator/scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/kov-controller)
install_compressed(docs/KOV-Controller.1 ${CMAKE_INSTALL_MANDIR}/man1 KOV-Controller.1)
# For who types the name in lower case.
file(CREATE_LINK KOV-Controller.1.gz ${CMAKE_BINARY_DIR}/packaging/kov-controller.1.gz SYMBOLIC)
install(FILES ${CMAKE_BINARY_DIR}/packaging/kov-controller.1.gz
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install_compressed(packaging/debian/changelog ${document_folder} changelog)
install(FILES README.md packaging/debian/copyright DESTINATION ${document_folder})
file(GLOB pages CONFIGURE_DEPENDS docs/*.md)
install(FILES ${pages} DESTINATION ${document_folder}/docs) # as README.md says
install(DIRECTORY docs/pictures DESTINATION ${document_folder}/docs)
install(FILES completions/KOV-Controller.bash RENAME KOV-Controller
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_KOV-Controller DESTINATION ${zsh_folder})

if(TARGET kov)
  install(TARGETS kov RUNTIME DESTINATION bin)
  foreach(library IN ITEMS tap replay)
    install(TARGETS kov_${library} LIBRARY DESTINATION ${library_folder}/${library}
      PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endforeach()
  install_compressed(docs/kov.1 ${CMAKE_INSTALL_MANDIR}/man1 kov.1)
  install(FILES docs/kov-report.schema.json DESTINATION ${document_folder}/docs)
  install(FILES completions/kov.bash RENAME kov
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES completions/_kov DESTINATION ${zsh_folder})
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kov-controller)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "console utility for the KOV Controller")
set(CPACK_PACKAGE_DESCRIPTION "\
Commissions, operates and tests one laboratory instrument, the KOV Controller:
a base device with a heat-controller, up to three high-voltage supplies, fans,
interlocks and a memory of configuration sets.
.
A simulated instrument comes with it, behind the interface of the maker's
device library, so that every command can be tried without hardware. The
companion kov judges, compares and follows reports of the acceptance test, and
draws what was recorded; it records and replays library calls.")
set(CPACK_PACKAGE_CONTACT "KOV-Controller developers <developers@kov-controller.invalid>")
set(CPACK_PACKAGE_VENDOR "KOV-Controller developers")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnuplot-nox | gnuplot") # kov log plot -o x.svg
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
