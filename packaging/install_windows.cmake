# What is installed where on Windows, and the zip that a user unpacks and runs ("cpack" in the build
# folder). The program looks for the device library in its own folder alone.
#
#   KOV-Controller.exe, COM-KOV-CTRL.dll, kov.exe
#   tap/, replay/               libraries of kov, of the same name
#   scenarios/                  for the simulated instrument
#   README.md, docs/            the guide, and what it refers to
install(TARGETS KOV-Controller COM-KOV-CTRL RUNTIME DESTINATION . LIBRARY DESTINATION .)
install(DIRECTORY simulator/scenarios DESTINATION .)
install(FILES README.md DESTINATION .)
file(GLOB pages CONFIGURE_DEPENDS docs/*.md)
install(FILES ${pages} DESTINATION docs) # as README.md says
install(DIRECTORY docs/pictures DESTINATION docs)

if(TARGET kov)
  install(TARGETS kov RUNTIME DESTINATION .)
  foreach(library IN ITEMS tap replay)
    install(TARGETS kov_${library} RUNTIME DESTINATION ${library})
  endforeach()
  install(FILES docs/kov-report.schema.json DESTINATION docs)
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "KOV-Controller developers")
set(CPACK_SYSTEM_NAME windows)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
