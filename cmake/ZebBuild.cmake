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

find_program(ZEB_CCACHE ccache)
if(ZEB_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZEB_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZEB_CCACHE})
endif()

add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 STRICT)
include_directories("${CMAKE_SOURCE_DIR}")
# Generated headers (from IDL, version) are included by the path of their source folder.
include_directories("${CMAKE_BINARY_DIR}")
# No time of linking: the same sources make the same bytes.
add_link_options(-static -Wl,--no-insert-timestamp -Wl,--gc-sections)
add_link_options(-wrapper "${CMAKE_SOURCE_DIR}/cmake/link-with-lld" -fno-use-linker-plugin)

# For crash dumps: functions and their lines, with the repository's folder as /zeb wherever it is. They change no
# instruction, and packaging moves them out of the programs. Off for the tests, which would take longer to build.
option(ZEB_LINE_NUMBERS "Debug information that names functions and lines" OFF)
if(ZEB_LINE_NUMBERS)
  add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:-g1;-ffile-prefix-map=${CMAKE_SOURCE_DIR}=/zeb>")
endif()

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

# Several sources are compiled as one, which saves about half of the time. Those that cannot stand beside
# others, because both name something alike, are listed as ALONE.
function(zeb_compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# zeb_library(name SOURCES a.cpp ... [LIBS b ...] [ALONE a.cpp ...] [SMALL]): a static library of ours. SMALL prefers
# size to speed; such a library compiles the headers once more, because both must be compiled alike.
function(zeb_library name)
  cmake_parse_arguments(ARG "SMALL" "" "SOURCES;LIBS;ALONE" ${ARGN})
  zeb_compile_alone(${ARG_ALONE})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE zeb_warnings)
  if(ARG_SMALL)
    target_compile_options(${name} PRIVATE -Os)
    target_precompile_headers(${name} PRIVATE ${ZEB_SYSTEM_HEADERS})
  else()
    target_precompile_headers(${name} REUSE_FROM zeb_precompiled)
  endif()
endfunction()

# zeb_test(name SOURCES a.cpp ... [LIBS b ...] [LABELS l ...] [PREFIX p] [LIMIT seconds] [ALONE a.cpp ...]): a
# GoogleTest program, run under Wine by ctest as one test, which may take LIMIT seconds. PREFIX names a Wine prefix
# in the build folder that one program at a time has to itself; the product is registered in "prefix" and
# "prefix-server". All others run beside each other in a prefix where nothing is registered.
function(zeb_test name)
  cmake_parse_arguments(ARG "" "PREFIX;LIMIT" "SOURCES;LIBS;LABELS;ALONE" ${ARGN})
  zeb_compile_alone(${ARG_ALONE})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} zeb_test_support gmock zeb_warnings)
  target_precompile_headers(${name} REUSE_FROM zeb_test_precompiled)
  # The tests' own code is compiled for speed of compilation: with more memory the compiler does without most of its
  # garbage collections, which take 4 to 8 % of the time. That a fixture is known in its own source only, as it is
  # meant to be, is a warning where several sources are compiled as one.
  target_compile_options(${name} PRIVATE -O0 --param=ggc-min-heapsize=400000 -Wno-subobject-linkage)
  if(NOT ARG_LIMIT)
    set(ARG_LIMIT 240)
  endif()
  # The script gives up before ctest does, and has time to write down what hangs.
  math(EXPR last "${ARG_LIMIT} + 300")
  set(run "${CMAKE_SOURCE_DIR}/scripts/run-test")
  if(ARG_PREFIX)
    set(alone --alone)
    set(lock RESOURCE_LOCK ${ARG_PREFIX})
  else()
    set(ARG_PREFIX prefix-tests)
  endif()
  add_test(NAME ${name} COMMAND
    "${run}" ${alone} "${CMAKE_BINARY_DIR}/${ARG_PREFIX}" ${ARG_LIMIT} $<TARGET_FILE:${name}>)
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${last} ${lock})
endfunction()

# zeb_version_resource(target NAME file.dll TYPE VFT_DLL DESCRIPTION "..."): the product's version as a resource of a
# file that ships.
function(zeb_version_resource target)
  cmake_parse_arguments(ARG "" "NAME;TYPE;DESCRIPTION" "" ${ARGN})
  set(NAME "${ARG_NAME}")
  set(TYPE "${ARG_TYPE}")
  set(DESCRIPTION "${ARG_DESCRIPTION}")
  configure_file("${CMAKE_SOURCE_DIR}/resources/Version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}Version.rc" @ONLY)
  target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}Version.rc")
endfunction()

# zeb_ships(NAME FILE [TARGET]): FILE is part of the package, under this name; TARGET makes it.
function(zeb_ships name file)
  set_property(GLOBAL APPEND PROPERTY ZEB_SHIPPED_FILES "${name}\t${file}")
  set_property(GLOBAL APPEND PROPERTY ZEB_SHIPPED_TARGETS ${ARGN})
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
