# For another machine: the headers of this one's package nlohmann-json3-dev, which are the same everywhere, without the
# rest of /usr/include, which is not.
if(NOT TARGET nlohmann_json::nlohmann_json)
  set(headers ${CMAKE_BINARY_DIR}/nlohmann_json)
  file(MAKE_DIRECTORY ${headers})
  file(CREATE_LINK /usr/include/nlohmann ${headers}/nlohmann SYMBOLIC)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${headers})
endif()
set(nlohmann_json_FOUND TRUE)
