# The test framework for cross-compilation: its headers only, no library to link.
foreach(target GTest::gtest GTest::gtest_main)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} SYSTEM INTERFACE "${TQ_GTEST_INCLUDE}")
endforeach()
