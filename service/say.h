#pragma once

#include <string>

namespace fieldline::service {

// A line on standard error, which the service manager keeps with its time. From any thread.
void Say(const std::string& text);

}  // namespace fieldline::service
