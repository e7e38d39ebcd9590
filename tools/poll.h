#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline poll KIND`: polls one device and shows its record.
Verb AddPoll(CLI::App& app);

}  // namespace fieldline::tool
