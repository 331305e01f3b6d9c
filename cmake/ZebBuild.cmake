# Settings and functions that every folder's build file uses.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_FLAGS_RELEASE "-O2")
set(CMAKE_C_FLAGS_RELEASE "-O2")

# Everything that runs stands in one folder, as it does where it is installed: libraries are found
# beside the program that asks for them.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_SHARED_LIBRARY_PREFIX "")

# Tests run under Wine, in prefixes of the build folder's own: those of the registered product where that is
# registered, all others beside them in a prefix where nothing is.
set(ZEB_WINE_RUN "${CMAKE_SOURCE_DIR}/scripts/wine-run")
set(ZEB_PRODUCT_PREFIX "${CMAKE_BINARY_DIR}/prefix")
set(CMAKE_CROSSCOMPILING_EMULATOR "${ZEB_WINE_RUN};${CMAKE_BINARY_DIR}/prefix-tests")

find_program(ZEB_CCACHE ccache)
if(ZEB_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZEB_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZEB_CCACHE})
endif()

add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 STRICT)
include_directories("${CMAKE_SOURCE_DIR}")
# Generated headers (from IDL, version) are included by the path of their source folder.
include_directories("${CMAKE_BINARY_DIR}")
add_link_options(-static)

# Warnings for our own C++ code; generated C code and GoogleTest are compiled without.
# Array bounds are left out: GCC 12 finds violations in the inlined code of std::wstring where there are none.
add_library(zeb_warnings INTERFACE)
target_compile_options(zeb_warnings INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Werror -Wno-unknown-pragmas -Wno-array-bounds>)

# The system's and the standard library's headers take longer to read than our own code: they are
# compiled once for the libraries and once, with GoogleTest, for the tests. A source still includes
# what it uses.
set(ZEB_SYSTEM_HEADERS
  <windows.h> <objbase.h> <oleauto.h> <wbemcli.h> <wbemprov.h>
  <algorithm> <atomic> <functional> <map> <memory> <optional> <string> <string_view> <variant> <vector>)
file(WRITE "${CMAKE_BINARY_DIR}/Precompiled.cpp" "")
add_library(zeb_precompiled STATIC "${CMAKE_BINARY_DIR}/Precompiled.cpp")
target_precompile_headers(zeb_precompiled PRIVATE ${ZEB_SYSTEM_HEADERS})
target_link_libraries(zeb_precompiled PRIVATE zeb_warnings)

# zeb_library(name SOURCES a.cpp ... [LIBS b ...]): a static library of ours.
function(zeb_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE zeb_warnings)
  target_precompile_headers(${name} REUSE_FROM zeb_precompiled)
endfunction()

# zeb_test(name SOURCES a.cpp ... [LIBS b ...] [LABELS l ...] [REGISTERED]): a GoogleTest program, run by ctest
# as one test. REGISTERED: it needs the product's registration; one such program runs at a time.
function(zeb_test name)
  cmake_parse_arguments(ARG "REGISTERED" "" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} zeb_test_support gmock zeb_warnings)
  target_precompile_headers(${name} REUSE_FROM zeb_test_precompiled)
  # The tests' own code is compiled for speed of compilation.
  target_compile_options(${name} PRIVATE -O0)
  set(command ${name})
  if(ARG_REGISTERED)
    set(command "${ZEB_WINE_RUN}" "${ZEB_PRODUCT_PREFIX}" $<TARGET_FILE:${name}>)
  endif()
  add_test(NAME ${name} COMMAND ${command})
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 240)
  if(ARG_REGISTERED)
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK product_prefix)
  endif()
endfunction()

# Header-only libraries of the build machine: CLI11 (command lines), nlohmann-json (JSON), PEGTL (parsing).
# They are reached through links of their own, because the folder that they stand in also holds the build
# machine's C library. Link zeb_header_libraries to include them.
set(ZEB_HEADER_LIBRARIES "${CMAKE_BINARY_DIR}/header-libraries")
file(MAKE_DIRECTORY "${ZEB_HEADER_LIBRARIES}")
foreach(library CLI nlohmann tao)
  if(EXISTS "/usr/include/${library}")
    file(CREATE_LINK "/usr/include/${library}" "${ZEB_HEADER_LIBRARIES}/${library}" SYMBOLIC)
  endif()
endforeach()
add_library(zeb_header_libraries INTERFACE)
target_include_directories(zeb_header_libraries SYSTEM INTERFACE "${ZEB_HEADER_LIBRARIES}")
