#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline scan`: looks for devices on a line, address by address.
Verb AddScan(CLI::App& app);

}  // namespace fieldline::tool
