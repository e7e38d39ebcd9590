#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/verbs/verb.h"

namespace fieldline::tool {

// Returns the verb that the arguments select; null after printing the text of --help or --version. Throws UsageError
// for unknown arguments; the message names the argument and suggests a similar one.
const Verb* ParseArguments(CLI::App& app, const std::vector<Verb>& verbs, int argc, char** argv);

}  // namespace fieldline::tool
