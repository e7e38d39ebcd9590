#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <functional>
#include <string>

#include "polling/site/duration.h"

namespace fieldline::tool {

// Adds an option that takes a duration such as 250ms or 5s, at most `most`.
void AddDuration(CLI::App& command, const std::string& name, const std::string& description,
                 std::function<void(std::chrono::milliseconds)> store, std::chrono::milliseconds most = kDay);

}  // namespace fieldline::tool
