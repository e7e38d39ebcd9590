#pragma once

#include <span>
#include <string_view>

namespace fieldline::service {

// A file of the page, inside the program.
struct WebFile {
  std::string_view path;  // "/app.js"
  std::string_view type;
  std::string_view content;
  bool is_public;  // needs no token: it is needed to give one
};

std::span<const WebFile> WebFiles();

// Null when there is no such path.
const WebFile* FindWebFile(std::string_view path);

}  // namespace fieldline::service
