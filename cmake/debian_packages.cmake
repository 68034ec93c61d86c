# Debian packages by cpack, one a component: see docs/packaging.md. The preset "package" has the right prefix.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantu-orvanta)
set(CPACK_PACKAGE_VENDOR Vantu)
if(NOT CPACK_PACKAGE_CONTACT)
  set(CPACK_PACKAGE_CONTACT "Vantu Orvanta maintainers <maintainers@orvanta.example>")
endif()
# Each package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL runtime development tools simulator)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian_files.cmake)
set(CPACK_ORVANTA_FILES ${PROJECT_SOURCE_DIR}/cmake/debian)
set(CPACK_ORVANTA_CHANGES ${PROJECT_SOURCE_DIR}/CHANGELOG.md)

set(library libvantu-orvanta${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
# By hand: cpack's own would want exactly this version, and it knows no trigger.
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs "libvantu_orvanta ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)
set(this_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

# component, package, section, what else it needs, first line, text
function(orvanta_package component name section depends summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
endfunction()
orvanta_package(runtime ${library} libs "" "client library of the Orvanta3's device service"
  "Programs use this library to find Orvanta3 devices, to follow their states and
to configure them, by way of the device service of the same machine.")
orvanta_package(development libvantu-orvanta-dev libdevel "${library} (= ${this_version})"
  "client library of the Orvanta3's device service, for development"
  "Headers, the static library, the CMake package and the pkg-config file, and a
library that simulates the device service for tests.")
orvanta_package(tools orvanta-tools utils "${library} (>= ${PROJECT_VERSION})" "console tools for the Orvanta3"
  "orvanta-cli finds an Orvanta3, shows its identity and configuration, and
changes and saves its settings. orvantactl does the same for scripts, keeps
backups, shows the device live, and tells why something does not work. A
dissector shows the conversations with the device service in Wireshark.")
orvanta_package(simulator orvanta-simulator utils "" "device service without a device, for the Orvanta3"
  "orvanta-simulator stands in for the device service where there is no device.
Asked to, it loses, damages and forges datagrams, so that programs can be
tested. orvanta-conformance holds any service against the protocol.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "wireshark | tshark")
include(CPack)
