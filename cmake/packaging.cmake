# Installation: tools, scenarios, library, public headers and the CMake package vantu_orvanta.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vantu_orvanta)

if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
  # Hidden visibility leaves instances of the standard library's templates visible; this hides them.
  target_link_options(orvanta PRIVATE LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exported_symbols.map)
  set_target_properties(orvanta PROPERTIES LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exported_symbols.map)
endif()

if(ORVANTA_BUILD_PROGRAMS)
  # The tools find the library beside themselves, wherever the folder is moved to.
  file(RELATIVE_PATH library_from_tools /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set(tools orvanta-cli orvanta-simulator)
  set_target_properties(${tools} PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_tools}")
  install(TARGETS ${tools} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(TARGETS orvanta_simulator EXPORT vantu_orvanta_simulator_targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT vantu_orvanta_simulator_targets
    NAMESPACE vantu:: FILE vantu_orvanta-simulator-targets.cmake DESTINATION ${package_folder})
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/include/vantu/orvanta/simulator.hpp
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vantu/orvanta)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/simulator/scenarios DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/orvanta
    FILES_MATCHING PATTERN "*.json")
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/man/orvanta-simulator.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/man/orvanta-scenario.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
endif()
install(TARGETS orvanta EXPORT vantu_orvanta_targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Every header of the runtime that C can read is public. Those of the other layers are named.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/runtime/include/vantu DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(FILES
  ${PROJECT_SOURCE_DIR}/src/client/include/vantu/orvanta/client.hpp
  ${PROJECT_SOURCE_DIR}/src/common/include/vantu/orvanta/error_codes.h
  ${PROJECT_BINARY_DIR}/include/vantu/orvanta/export.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vantu/orvanta)
install(FILES ${PROJECT_SOURCE_DIR}/src/common/include/vantu/orvanta/communication/records.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vantu/orvanta/communication)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT vantu_orvanta_targets
  NAMESPACE vantu:: FILE vantu_orvanta-targets.cmake DESTINATION ${package_folder})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/vantu_orvanta-config.cmake.in ${PROJECT_BINARY_DIR}/vantu_orvanta-config.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vantu_orvanta-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/vantu_orvanta-config.cmake
  ${PROJECT_BINARY_DIR}/vantu_orvanta-config-version.cmake
  DESTINATION ${package_folder})
