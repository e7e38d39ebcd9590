#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline test-port KIND...`: polls devices through the test port and shows the records that it keeps.
Verb AddTestPort(CLI::App& app);

}  // namespace fieldline::tool
