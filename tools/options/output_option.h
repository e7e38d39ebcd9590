#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace fieldline::tool {

// What the options common to most verbs ask for.
struct OutputArguments {
  bool json = false;
  bool quiet = false;
  std::string trace;  // what a TraceOutput takes

  // A line that is drawn over and over would disturb a trace.
  bool ShowsProgress() const { return !quiet && trace != "-"; }
};

// Adds --json, --quiet and --trace to a subcommand. The path of a trace is taken from behind '=' alone, so that
// "--trace envir" leaves envir to be the kind.
void AddOutputOptions(CLI::App& command, OutputArguments& arguments);

}  // namespace fieldline::tool
