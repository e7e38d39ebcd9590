#pragma once

#include <string>
#include <string_view>

#include "fieldline/platform/console.h"

namespace fieldline::tool {

// The text in red when `stream` is a terminal and NO_COLOR is not set; otherwise unchanged.
std::string Alert(std::string_view text, Stream stream = Stream::kError);

}  // namespace fieldline::tool
