# Installation, by component: runtime (the shared library), development (headers, what links, the CMake package
# and the pkg-config file, the simulator's library), tools (the console tool, the tool for scripts) and simulator (also the
# conformance kit).
include(CMakePackageConfigHelpers)

# Public headers: those of vantu/orvanta itself, each in the folder below "include" that it is included from.
file(GLOB public_headers
  ${PROJECT_SOURCE_DIR}/src/*/include/vantu/orvanta/*.h ${PROJECT_SOURCE_DIR}/src/*/include/vantu/orvanta/*.hpp)
list(APPEND public_headers ${PROJECT_SOURCE_DIR}/src/common/include/vantu/orvanta/communication/records.h)
list(APPEND public_headers ${PROJECT_BINARY_DIR}/include/vantu/orvanta/export.h)
set(libraries orvanta)
if(TARGET orvanta_static)
  list(APPEND libraries orvanta_static)
endif()
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vantu_orvanta)

if(ORVANTA_BUILD_PROGRAMS)
  list(APPEND public_headers ${PROJECT_SOURCE_DIR}/simulator/include/vantu/orvanta/simulator.hpp)
  # The tools find the library beside themselves, wherever the folder is moved to.
  file(RELATIVE_PATH library_from_tools /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(orvanta-cli orvantactl orvanta-simulator PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_tools}")
  install(TARGETS orvanta-cli orvantactl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS orvanta-simulator orvanta-conformance RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT simulator)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/simulator/scenarios DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/orvanta
    COMPONENT simulator FILES_MATCHING PATTERN "*.json")
  install(FILES ${PROJECT_SOURCE_DIR}/app/man/orvanta-cli.1 ${PROJECT_SOURCE_DIR}/ctl/man/orvantactl.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/orvantactl.schema.json
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/orvanta COMPONENT tools)
  if(TARGET orvanta_dissector)
    # Wireshark looks there for plugins of all versions.
    install(FILES $<TARGET_PROPERTY:orvanta_dissector,DISSECTOR>
      DESTINATION ${CMAKE_INSTALL_LIBDIR}/wireshark/plugins COMPONENT tools)
  endif()
  # Each shell looks for a file of its own name.
  set(completions ${PROJECT_SOURCE_DIR}/ctl/completions)
  install(FILES ${completions}/orvantactl.bash RENAME orvantactl
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions COMPONENT tools)
  install(FILES ${completions}/_orvantactl
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions COMPONENT tools)
  install(FILES ${completions}/orvantactl.fish
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/man/orvanta-simulator.1
    ${PROJECT_SOURCE_DIR}/conformance/man/orvanta-conformance.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT simulator)
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/man/orvanta-scenario.5
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT simulator)
  install(TARGETS orvanta_simulator EXPORT vantu_orvanta_simulator_targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(EXPORT vantu_orvanta_simulator_targets
    NAMESPACE vantu:: FILE vantu_orvanta-simulator-targets.cmake DESTINATION ${package_folder} COMPONENT development)
endif()

install(TARGETS ${libraries} EXPORT vantu_orvanta_targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/THIRD_PARTY.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/session
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development)
foreach(header IN LISTS public_headers)
  string(REGEX REPLACE "^.*/include/(.*/)[^/]*$" "\\1" folder ${header})
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT development)
endforeach()

# What a program without C++ of its own links for a static library: the C++ compiler's libraries that the C
# compiler does not link.
set(cxx_runtime ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_ITEM cxx_runtime ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_DUPLICATES cxx_runtime)

install(EXPORT vantu_orvanta_targets
  NAMESPACE vantu:: FILE vantu_orvanta-targets.cmake DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/vantu_orvanta-config.cmake.in ${PROJECT_BINARY_DIR}/vantu_orvanta-config.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vantu_orvanta-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/vantu_orvanta-config.cmake
  ${PROJECT_BINARY_DIR}/vantu_orvanta-config-version.cmake
  DESTINATION ${package_folder} COMPONENT development)

include(pkg_config_file)

if(PROJECT_IS_TOP_LEVEL AND NOT TARGET uninstall)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake.in ${PROJECT_BINARY_DIR}/uninstall.cmake @ONLY)
  add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${PROJECT_BINARY_DIR}/uninstall.cmake
    COMMENT "Removing what was installed" VERBATIM)
endif()
