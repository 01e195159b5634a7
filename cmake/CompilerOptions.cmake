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
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
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

# What makes a fault in memory end the program instead of serving whoever caused it. A test looks for
# it in the installed programs.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  include(CheckCXXCompilerFlag)
  include(CheckCXXSourceCompiles)
  add_compile_options(-fstack-protector-strong)
  foreach(flag IN ITEMS stack-clash-protection cf-protection)
    check_cxx_compiler_flag(-f${flag} VENDRIL_HAS_${flag})
    if(VENDRIL_HAS_${flag})
      add_compile_options(-f${flag})
    endif()
  endforeach()
  # Level 3 also knows the sizes that are found out while the program runs.
  set(CMAKE_REQUIRED_FLAGS "-O2 -D_FORTIFY_SOURCE=3")
  check_cxx_source_compiles("#include <features.h>
    static_assert(__USE_FORTIFY_LEVEL == 3);
    int main() {}" VENDRIL_HAS_FORTIFY_3)
  unset(CMAKE_REQUIRED_FLAGS)
  if(VENDRIL_HAS_FORTIFY_3)
    add_compile_definitions(_FORTIFY_SOURCE=3)
  else()
    add_compile_definitions(_FORTIFY_SOURCE=2)
  endif()
  add_link_options(-Wl,-O1,-z,relro,-z,now,-z,noexecstack,--as-needed)
endif()
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
