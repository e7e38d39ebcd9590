# embed_files(OUTPUT NAME=PATH...): writes a C++ header that holds the contents of the files as std::string_views of these
# names. At configure time, so that whatever reads the sources finds it; a file that changes configures anew.
function(embed_files output)
  set(text "#pragma once\n\n#include <string_view>\n\nnamespace fieldline::service::web {\n")
  foreach(entry ${ARGN})
    string(REGEX MATCH "^([A-Za-z]+)=(.*)$" matched "${entry}")
    set(name ${CMAKE_MATCH_1})
    set(path ${CMAKE_MATCH_2})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
    file(READ "${path}" bytes HEX)
    file(SIZE "${path}" size)
    string(REGEX REPLACE "(................................................................)" "\\1\n" bytes "${bytes}")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND text "\ninline constexpr char ${name}Bytes[] = {\n${bytes}\n};\n"
                       "inline constexpr std::string_view ${name}(${name}Bytes, ${size});\n")
  endforeach()
  string(APPEND text "\n}  // namespace fieldline::service::web\n")
  # Only a header that changed is compiled again.
  file(WRITE "${output}.new" "${text}")
  configure_file("${output}.new" "${output}" COPYONLY)
endfunction()
