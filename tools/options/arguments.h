#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/verbs/verb.h"

namespace fieldline::tool {

// The verb that the arguments ask for; null when it was --help or --version, which has been answered. Throws UsageError
// for anything that fits no verb: it names the argument, and what may have been meant.
const Verb* ParseArguments(CLI::App& app, const std::vector<Verb>& verbs, int argc, char** argv);

}  // namespace fieldline::tool
