#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>
#include <string>

#include "tools/exit_code.h"

namespace fieldline::tool {

// A subcommand of the command, and what it does once its arguments are read.
struct Verb {
  CLI::App* command;
  std::function<ExitCode()> run;
};

// An argument that is wrong: what is wrong with it, and what to write in its place.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace fieldline::tool
