#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "polling/exit_code.h"
#include "polling/usage_error.h"

namespace fieldline::tool {

// A subcommand, and the function that runs it after its arguments are read.
struct Verb {
  CLI::App* command;
  std::function<ExitCode()> run;
};

}  // namespace fieldline::tool
