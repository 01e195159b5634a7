# C++20, warnings as errors, and the sanitizer of the preset, for every target of ours.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(VENDRIL_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(VENDRIL_FUZZ "Build the fuzz targets with libFuzzer, which is part of clang" OFF)
option(VENDRIL_COVERAGE "Count how often each line runs" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Werror)
add_compile_definitions(_FILE_OFFSET_BITS=64)
include_directories("${CMAKE_SOURCE_DIR}")

if(VENDRIL_SANITIZE)
  add_compile_options(-fsanitize=${VENDRIL_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VENDRIL_SANITIZE})
endif()
if(VENDRIL_COVERAGE)
  # Several threads, and several processes of one program, count at the same time.
  add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
  add_link_options(--coverage)
endif()
if(VENDRIL_FUZZ)
  # The counters that guide the fuzzer, in all of the code.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_options(-fstack-protector-strong -fstack-clash-protection -fcf-protection)
  add_compile_definitions(_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack,--as-needed)
endif()
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
