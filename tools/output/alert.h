#pragma once

#include <string>
#include <string_view>

namespace fieldline::tool {

// Red on a terminal, unless NO_COLOR is set.
std::string Alert(std::string_view text);

}  // namespace fieldline::tool
