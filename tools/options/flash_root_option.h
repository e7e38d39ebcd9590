#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace fieldline::tool {

// Adds --flash-root to a subcommand.
void AddFlashRoot(CLI::App& command, std::string& directory);

}  // namespace fieldline::tool
