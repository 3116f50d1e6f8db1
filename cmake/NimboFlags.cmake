# What every target of the project is compiled with. Link nimbo_flags privately.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Checks are part of the contract in every build: no configuration defines NDEBUG, so that the
# generated messages' own assertions stay on too.
foreach(language C CXX)
  set(CMAKE_${language}_FLAGS_RELEASE "-O2 -g1")
  set(CMAKE_${language}_FLAGS_RELWITHDEBINFO "-O2 -g")
endforeach()
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

file(RELATIVE_PATH NIMBO_SRC_FROM_BUILD ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR}/src)

add_library(nimbo_flags INTERFACE)
target_compile_options(nimbo_flags INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wformat=2
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual> -Wcast-qual -Wimplicit-fallthrough
  # Failed checks name their source by its path below src/, wherever the tree stands. Of the maps
  # that fit, g++ takes the last. A compiler cache may give it paths relative to the build tree.
  "-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/="
  "-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/src/="
  "-fmacro-prefix-map=${NIMBO_SRC_FROM_BUILD}/=")

if(NIMBO_SANITIZE)
  add_compile_options(-fsanitize=${NIMBO_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all
    $<$<CXX_COMPILER_ID:Clang>:-fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/cmake/sanitizer-ignore.txt>)
  # g++ 12 takes the sanitizers' own code in the library's headers for reads of uninitialised
  # members.
  target_compile_options(nimbo_flags INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${NIMBO_SANITIZE})
endif()

if(NIMBO_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)  # the libraries too tell the fuzzer where they go
endif()
