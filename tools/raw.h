#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline raw BYTES`: sends bytes and shows what comes back.
Verb AddRaw(CLI::App& app);

}  // namespace fieldline::tool
