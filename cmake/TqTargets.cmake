# How the project's targets are compiled and linked, in one place.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
include(CheckCXXCompilerFlag)

if(TQ_SANITIZE)
  add_compile_options(-fsanitize=${TQ_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TQ_SANITIZE})
endif()

# Everywhere, since tests share internal headers with the library.
if(TQ_VALGRIND)
  add_compile_definitions(TQ_VALGRIND)
endif()

if(TQ_HEAP_CHECK_EVERY)
  add_compile_definitions(TQ_HEAP_CHECK_EVERY=${TQ_HEAP_CHECK_EVERY})
endif()

# The library's sources alone are counted; with counters of their own the tests would take minutes.
if(TQ_COVERAGE)
  add_link_options(--coverage)
endif()

# The fuzzer needs the library itself to tell which code an input has reached.
if(TQ_LIBFUZZER)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

add_library(TqWarnings INTERFACE)
target_compile_options(
  TqWarnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wundef
            -Wshadow
            -Wconversion
            $<$<BOOL:${TQ_WARNINGS_AS_ERRORS}>:-Werror>)

# The library's own objects: C++20, position independent, nothing visible but what is marked so.
function(tq_configure_objects target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(
    ${target}
    PROPERTIES POSITION_INDEPENDENT_CODE ON
               CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
  # Whoever names no build type gets an optimised library.
  target_compile_options(${target} PRIVATE $<$<CONFIG:>:-O3>)
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:>:NDEBUG>)
  # Calls among our own exported functions are direct and may be inlined; clang never does otherwise.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
  # Callers may have subnormals read as zero. Clang must not make a comparison of doubles of one of their bits then.
  check_cxx_compiler_flag(-fdenormal-fp-math=dynamic TQ_HAS_DYNAMIC_DENORMALS)
  if(TQ_HAS_DYNAMIC_DENORMALS)
    target_compile_options(${target} PRIVATE -fdenormal-fp-math=dynamic)
  endif()
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:TqWarnings>)
  if(TQ_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# SONAME (install name on macOS, looked for in the run path) carries the major version; an undefined symbol is a link
# error.
function(tq_configure_shared target)
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(APPLE)
    set_target_properties(${target} PROPERTIES INSTALL_NAME_DIR "@rpath" BUILD_WITH_INSTALL_NAME_DIR ON)
  else()
    target_link_options(${target} PRIVATE "LINKER:--version-script,${PROJECT_SOURCE_DIR}/cmake/TqOsBase.map")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/TqOsBase.map")
    if(NOT TQ_SANITIZE)
      target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
  endif()
endfunction()

# A program of the project (test, example, benchmark, fuzz target): same language and warnings as the library.
function(tq_add_program name)
  add_executable(${name} ${ARGN})
  target_compile_features(${name} PRIVATE cxx_std_20)
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
  target_link_libraries(${name} PRIVATE TqWarnings)
  # Optimised, GCC 12 takes sums of its own strings for copies that overlap.
  target_compile_options(${name} PRIVATE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>)
  if(TQ_COVERAGE)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests/reference/CoverageAtExit.cpp")
    target_link_options(${name} PRIVATE LINKER:--wrap=_exit LINKER:--wrap=_Exit)
  endif()
endfunction()
