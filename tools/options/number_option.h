#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

namespace fieldline::tool {

// Adds an option that takes a number from `low` to `high`, decimal, or hexadecimal after "0x".
CLI::Option* AddNumber(CLI::App& command, const std::string& name, int low, int high, const std::string& description,
                       std::function<void(int)> store);

}  // namespace fieldline::tool
