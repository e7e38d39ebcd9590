#include "tools/output/alert.h"

#include <cstdlib>

#include "fieldline/platform/console.h"

namespace fieldline::tool {

std::string Alert(std::string_view text, Stream stream) {
  const bool colour = IsTerminal(stream) && std::getenv("NO_COLOR") == nullptr;
  return colour ? "\033[31m" + std::string(text) + "\033[0m" : std::string(text);
}

}  // namespace fieldline::tool
