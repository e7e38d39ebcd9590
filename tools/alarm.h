#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline alarm OPERATION`: one operation of the alarm board.
Verb AddAlarm(CLI::App& app);

}  // namespace fieldline::tool
