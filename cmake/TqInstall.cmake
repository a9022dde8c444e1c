# Install rules: libraries, headers, the CMake package (find_package(TqOsBase CONFIG)) and the pkg-config file.
include(CMakePackageConfigHelpers)

# What a program needs to run is the component "runtime", the tools are "tools", all else is "development".
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(
  TARGETS TqOsBase TqOsBaseStatic
  EXPORT TqOsBaseTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT runtime
          NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/TqOsBase" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(
  PROGRAMS "${PROJECT_SOURCE_DIR}/tools/tq-porting"
  DESTINATION ${CMAKE_INSTALL_BINDIR}
  COMPONENT tools)
install(
  FILES "${PROJECT_SOURCE_DIR}/docs/porting.tsv" "${PROJECT_SOURCE_DIR}/docs/porting-missing.tsv"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/TqOsBase"
  COMPONENT tools)
set(TQ_MAN_PAGES tq-porting)
if(TQ_BUILD_EXAMPLES)
  install(TARGETS convert_text traverse_report RUNTIME COMPONENT tools)
  list(APPEND TQ_MAN_PAGES tq-convert-text tq-traverse-report)
endif()
foreach(page ${TQ_MAN_PAGES})
  install(
    FILES "${PROJECT_SOURCE_DIR}/docs/man/${page}.1"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
    COMPONENT tools)
endforeach()

# gdb loads the script that lies in its folder at the library's path, under the library's own name, by itself.
set(TQ_DEBUGGER_DIR "${CMAKE_INSTALL_DATADIR}/TqOsBase/debugger")
file(GLOB debugger_files CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tools/debugger/*.py"
     "${PROJECT_SOURCE_DIR}/tools/debugger/*.natvis")
install(FILES ${debugger_files} DESTINATION ${TQ_DEBUGGER_DIR})
if(NOT APPLE)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/gdb-auto-load.py.in" "${PROJECT_BINARY_DIR}/gdb-auto-load.py" @ONLY)
  install(
    FILES "${PROJECT_BINARY_DIR}/gdb-auto-load.py"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}"
    RENAME "libTqOsBase.so.${PROJECT_VERSION}-gdb.py")
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_library(TqDebuggerTypes OBJECT "${PROJECT_SOURCE_DIR}/tools/debugger/types.cpp")
    target_include_directories(TqDebuggerTypes PRIVATE "${PROJECT_SOURCE_DIR}/include")
    target_compile_features(TqDebuggerTypes PRIVATE cxx_std_17)
    target_compile_options(TqDebuggerTypes PRIVATE -O0 -g -gz -fno-lto -femit-class-debug-always)
    install(
      FILES $<TARGET_OBJECTS:TqDebuggerTypes>
      DESTINATION "${CMAKE_INSTALL_LIBDIR}/TqOsBase"
      RENAME debugger-types.o)
  endif()
endif()

set(TQ_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/TqOsBase")
install(EXPORT TqOsBaseTargets NAMESPACE TqOsBase:: DESTINATION ${TQ_PACKAGE_DIR})
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/TqOsBaseConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/TqOsBaseConfig.cmake" INSTALL_DESTINATION ${TQ_PACKAGE_DIR})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TqOsBaseConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TqOsBaseConfig.cmake" "${PROJECT_BINARY_DIR}/TqOsBaseConfigVersion.cmake"
        DESTINATION ${TQ_PACKAGE_DIR})

# The prefix is reckoned from where the file lies, so that an installed tree can be moved.
cmake_path(SET pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH TQ_PC_PREFIX "/${pkgconfig_dir}" "/")
# What a program needs beside the static library where no C++ compiler links it.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("#include <cstddef>\n#if !defined(_LIBCPP_VERSION)\n#error\n#endif\nint main() {}" TQ_IS_LIBCXX)
if(TQ_IS_LIBCXX)
  set(TQ_PC_PRIVATE "-lc++ -lm")
else()
  set(TQ_PC_PRIVATE "-lstdc++ -lm")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/TqOsBase.pc.in" "${PROJECT_BINARY_DIR}/TqOsBase.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/TqOsBase.pc" DESTINATION ${pkgconfig_dir})
