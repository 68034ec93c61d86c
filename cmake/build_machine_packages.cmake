# The packages that a cross build takes from the build machine: header-only ones, of which the compiler
# must see these headers alone and nothing else of /usr/include, and GoogleTest as source code.
set(build_machine_headers ${PROJECT_BINARY_DIR}/build_machine_headers)

# A package that find_package(NAME) then finds: a target with the headers of one folder of /usr/include.
function(provide_headers package target folder)
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing: run scripts/setup.sh windows")
  endif()
  file(MAKE_DIRECTORY ${build_machine_headers}/${package})
  file(CREATE_LINK /usr/include/${folder} ${build_machine_headers}/${package}/${folder} SYMBOLIC)
  string(TOLOWER ${package} lower)
  file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/${lower}-config.cmake
    "if(NOT TARGET ${target})
  add_library(${target} INTERFACE IMPORTED)
  set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${build_machine_headers}/${package})
endif()\n")
endfunction()

provide_headers(CLI11 CLI11::CLI11 CLI)
provide_headers(nlohmann_json nlohmann_json::nlohmann_json nlohmann)

if(ORVANTA_BUILD_TESTS)
  set(INSTALL_GTEST OFF)
  set(kind_of_the_library ${BUILD_SHARED_LIBS})
  set(BUILD_SHARED_LIBS OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  set(BUILD_SHARED_LIBS ${kind_of_the_library})
  # Code of others is not held to this project's warnings, and its headers are the system's.
  foreach(target gtest gtest_main gmock gmock_main)
    target_compile_options(${target} PRIVATE -w)
    get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
    set_target_properties(${target} PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${folders}")
  endforeach()
  file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/gtest-config.cmake "")
endif()
