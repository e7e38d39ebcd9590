#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline kinds`: lists the kinds of devices.
Verb AddKinds(CLI::App& app);

}  // namespace fieldline::tool
