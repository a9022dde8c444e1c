# Cross-compilation for x86_64 macOS; TQ_ZIG_DIR is where tools/macos_build.sh has put the compiler.
set(CMAKE_SYSTEM_NAME Darwin)
# What the platform files set on a Mac, whose version they know: libraries are found by the run path.
set(CMAKE_SHARED_LIBRARY_RUNTIME_C_FLAG "-Wl,-rpath,")
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TQ_ZIG_DIR)
set(CMAKE_CXX_COMPILER "${TQ_ZIG_DIR}/macos-c++")
set(CMAKE_AR llvm-ar CACHE FILEPATH "")
set(CMAKE_RANLIB llvm-ranlib CACHE FILEPATH "")
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool CACHE FILEPATH "")
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")
