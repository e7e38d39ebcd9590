#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline demo`: polls each kind of device once, against the simulator.
Verb AddDemo(CLI::App& app);

}  // namespace fieldline::tool
