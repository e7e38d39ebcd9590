#pragma once

#include <string>
#include <string_view>

#include "fieldline/platform/console.h"

namespace fieldline::tool {

// Red where `stream` is a terminal, unless NO_COLOR is set.
std::string Alert(std::string_view text, Stream stream = Stream::kError);

}  // namespace fieldline::tool
