# Linux with the C library musl: programs are static. TQ_ZIG_COMPILER is what tools/zig_compiler.sh prints for the target
# x86_64-linux-musl.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TQ_ZIG_COMPILER)
set(CMAKE_CXX_COMPILER "${TQ_ZIG_COMPILER}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
