#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline watch FILE`: polls all devices of a site file until Ctrl-C, and shows them as a table or as JSON.
Verb AddWatch(CLI::App& app);

}  // namespace fieldline::tool
