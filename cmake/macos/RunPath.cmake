# Read after project(): what CMake's own files set on a Mac, whose version they know. Libraries are found by the run path.
set(CMAKE_SHARED_LIBRARY_RUNTIME_C_FLAG "-Wl,-rpath,")
