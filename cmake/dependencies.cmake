# The packages that the project takes from elsewhere. The library needs fmt 10 alone, header-only.
find_package(Threads REQUIRED)

if(CMAKE_CROSSCOMPILING AND PROJECT_IS_TOP_LEVEL AND ORVANTA_BUILD_PROGRAMS)
  include(build_machine_packages)
endif()

if(NOT TARGET fmt::fmt-header-only)
  find_package(fmt 10 QUIET)
endif()
if(NOT TARGET fmt::fmt-header-only)
  set(fmt_folder ${PROJECT_SOURCE_DIR}/.deps/fmt)
  if(NOT EXISTS ${fmt_folder}/usr/include/fmt/format.h)
    if(NOT ORVANTA_FETCH)
      message(FATAL_ERROR "fmt 10 is missing: install it, add it to the project before this one, or set ORVANTA_FETCH")
    endif()
    message(STATUS "fmt 10 is not installed: fetching its headers into ${fmt_folder}")
    execute_process(COMMAND ${PROJECT_SOURCE_DIR}/scripts/fetch_fmt.sh ${fmt_folder} RESULT_VARIABLE fetch_result)
    if(NOT fetch_result EQUAL 0)
      message(FATAL_ERROR "fmt 10 is missing: install it, or run scripts/fetch_fmt.sh .deps/fmt where a Debian mirror can be reached")
    endif()
  endif()
  add_library(fmt::fmt-header-only INTERFACE IMPORTED)
  set_target_properties(fmt::fmt-header-only PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES ${fmt_folder}/usr/include
    INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY=1)
endif()

# The headers without fmt's own switch for compiling all of it in every source file that includes one.
add_library(orvanta_fmt INTERFACE)
target_include_directories(orvanta_fmt SYSTEM INTERFACE
  $<TARGET_PROPERTY:fmt::fmt-header-only,INTERFACE_INCLUDE_DIRECTORIES>)
