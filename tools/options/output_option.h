#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace fieldline::tool {

// The output options that most verbs have.
struct OutputArguments {
  bool json = false;
  bool quiet = false;
  std::string trace;  // as for TraceOutput

  // False with a trace on standard error: a progress line that is redrawn would disturb it.
  bool ShowsProgress() const { return !quiet && trace != "-"; }
};

// Adds --json, --quiet and --trace to a subcommand. A trace file is only accepted after '=', so that "envir" in
// "--trace envir" is the kind.
void AddOutputOptions(CLI::App& command, OutputArguments& arguments);

}  // namespace fieldline::tool
