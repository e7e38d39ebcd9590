#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline sim KIND...`: simulated devices on lines of their own, until Ctrl-C.
Verb AddSim(CLI::App& app);

}  // namespace fieldline::tool
