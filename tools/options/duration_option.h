#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <functional>
#include <string>

namespace fieldline::tool {

// Adds an option that takes a time such as 250ms or 5s.
void AddDuration(CLI::App& command, const std::string& name, const std::string& description,
                 std::function<void(std::chrono::milliseconds)> store);

}  // namespace fieldline::tool
