#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "polling/site/line_config.h"

namespace fieldline::tool {

// Adds --port, --map and --timeout to a subcommand. `usual_timeout` is shown in the help.
void AddLineOptions(CLI::App& command, LineArguments& arguments, const std::string& usual_timeout = "fits the speed");

// The options for polls, as they were given.
struct PollArguments {
  std::optional<int> pause;  // ms
  int retries = 0;
  bool any_address = false;
};

// Adds --pause, --retries and --any-address to a subcommand.
void AddPollOptions(CLI::App& command, PollArguments& arguments);

// The line with these options applied.
LineConfig WithOptions(LineConfig line, const PollArguments& arguments);

}  // namespace fieldline::tool
