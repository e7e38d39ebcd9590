# For another machine: GoogleTest from its source, Debian's package googletest.
if(NOT TARGET gtest)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
set(GTest_FOUND TRUE)
