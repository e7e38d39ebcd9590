#pragma once

#include <string_view>

namespace fieldline::service {

// What to look at when polls fail with this code; empty where the message says it all.
std::string_view AdviceFor(std::string_view code);

}  // namespace fieldline::service
