#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace fieldline::tool {

// Adds --trace to a subcommand. `trace` becomes what a Recorder takes: empty without the option, "-" for standard
// error, else the path of a file. A path is taken from behind '=' alone, so that "--trace envir" leaves envir to be the
// kind.
void AddTraceOption(CLI::App& command, std::string& trace);

}  // namespace fieldline::tool
