# Warnings and sanitizers, for every target of the project through orvanta_options.
add_library(orvanta_options INTERFACE)

if(MSVC)
  # 5030: attributes of other compilers are passed over. 4251, 4275: members and bases of exported classes
  # come from the standard library, which is the same for the library and its users.
  target_compile_options(orvanta_options INTERFACE /W4 /wd5030 /wd4251 /wd4275 /permissive- /utf-8)
else()
  target_compile_options(orvanta_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endif()
if(ORVANTA_WERROR)
  target_compile_options(orvanta_options INTERFACE $<IF:$<BOOL:${MSVC}>,/WX,-Werror>)
endif()

if(WIN32)
  # Windows 10 and later, without the parts of the system's headers that nothing here needs.
  add_compile_definitions(_WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX _CRT_SECURE_NO_WARNINGS
    _WINSOCK_DEPRECATED_NO_WARNINGS)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ inlines copies of known bounds as string instructions, which are several times slower than
  # the library's own routines for the sizes on the hot path.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-mmemcpy-strategy=libcall:-1:noalign>
                      $<$<COMPILE_LANGUAGE:CXX>:-mmemset-strategy=libcall:-1:noalign>)
  # Calls inside the shared library go straight to their functions.
  add_compile_options(-fno-semantic-interposition -fno-plt)
endif()

if(NOT MSVC AND NOT ORVANTA_SANITIZE AND NOT ORVANTA_COVERAGE)
  # What ships holds no path of the machine that built it. A debugger, on the contrary, wants them.
  foreach(folder ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${folder}=.>)
  endforeach()
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND NOT MSVC)
  # A build made anew takes its precompiled headers from the compiler cache, although their files are younger.
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
endif()

if(ORVANTA_SANITIZE)
  string(REPLACE ";" "," sanitizers "${ORVANTA_SANITIZE}")
  # At -O2 the instrumented code takes g++ three times as long, and finds nothing more.
  set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O1 -g1")
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1")
  add_compile_options(-fsanitize=${sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${sanitizers})
endif()

if(ORVANTA_COVERAGE)
  # The counters lie in the profile's file itself, so that a process counts which ends by abort or by a signal.
  set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O1")
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1")
  add_compile_options(-fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%m%c.profraw -fcoverage-mapping
    "SHELL:-mllvm -runtime-counter-relocation")
  add_link_options(-fprofile-instr-generate)
endif()

if(ORVANTA_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if("address" IN_LIST ORVANTA_SANITIZE)
  target_sources(orvanta_options INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${PROJECT_SOURCE_DIR}/tests/support/sanitizer_options.cpp>)
endif()
