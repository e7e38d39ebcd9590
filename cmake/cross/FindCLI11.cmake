# For another machine: the headers of this one's package libcli11-dev, as in Findnlohmann_json.cmake.
if(NOT TARGET CLI11::CLI11)
  set(headers ${CMAKE_BINARY_DIR}/cli11)
  file(MAKE_DIRECTORY ${headers})
  file(CREATE_LINK /usr/include/CLI ${headers}/CLI SYMBOLIC)
  add_library(CLI11::CLI11 INTERFACE IMPORTED)
  target_include_directories(CLI11::CLI11 INTERFACE ${headers})
endif()
set(CLI11_FOUND TRUE)
