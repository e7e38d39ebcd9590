#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline display OPERATION`: one frame to the serial display.
Verb AddDisplay(CLI::App& app);

}  // namespace fieldline::tool
