#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "polling/exit_code.h"
#include "polling/usage_error.h"

namespace fieldline::tool {

// A subcommand of the command, and what it does once its arguments are read.
struct Verb {
  CLI::App* command;
  std::function<ExitCode()> run;
};

}  // namespace fieldline::tool
