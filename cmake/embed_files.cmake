# cmake -D OUTPUT=header.h -D FILES=name=path;name=path... -P embed_files.cmake: writes a C++ header that holds the
# contents of the files as std::string_views of these names.
set(text "#pragma once\n\n#include <string_view>\n\nnamespace fieldline::service::web {\n")
foreach(entry ${FILES})
  string(REGEX MATCH "^([A-Za-z]+)=(.*)$" matched "${entry}")
  set(name ${CMAKE_MATCH_1})
  file(READ "${CMAKE_MATCH_2}" bytes HEX)
  string(LENGTH "${bytes}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "(................................................................)" "\\1\n" bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND text "\ninline constexpr char ${name}Bytes[] = {\n${bytes}\n};\n"
                     "inline constexpr std::string_view ${name}(${name}Bytes, ${size});\n")
endforeach()
string(APPEND text "\n}  // namespace fieldline::service::web\n")
file(WRITE "${OUTPUT}" "${text}")
