#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "polling/site/line_config.h"

namespace fieldline::tool {

// Adds --port, --map and --timeout to a subcommand. `usual_timeout` is for the help.
void AddLineOptions(CLI::App& command, LineArguments& arguments, const std::string& usual_timeout = "6,100");

}  // namespace fieldline::tool
