# What every target of this project is compiled with.
add_library(fieldline_options INTERFACE)
target_compile_features(fieldline_options INTERFACE cxx_std_20)
target_include_directories(fieldline_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
target_compile_options(
  fieldline_options INTERFACE $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wall -Wextra -Wpedantic -Wconversion
                              -Wshadow $<$<BOOL:${FIELDLINE_WERROR}>:-Werror>>)
# On 32-bit targets the C library's time ends in January 2038 unless it is told otherwise.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_definitions(fieldline_options INTERFACE _TIME_BITS=64 _FILE_OFFSET_BITS=64)
endif()
