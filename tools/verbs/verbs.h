#pragma once

#include "tools/verbs/verb.h"

namespace fieldline::tool {

// Each function adds a verb to the command, and is defined in the file with the verb's name.
Verb AddAlarm(CLI::App& app);
Verb AddAlarms(CLI::App& app);
Verb AddDemo(CLI::App& app);
Verb AddDisplay(CLI::App& app);
Verb AddKinds(CLI::App& app);
Verb AddPoll(CLI::App& app);
Verb AddRaw(CLI::App& app);
Verb AddRecord(CLI::App& app);
Verb AddScan(CLI::App& app);
Verb AddSim(CLI::App& app);
Verb AddTestPort(CLI::App& app);
Verb AddWatch(CLI::App& app);

}  // namespace fieldline::tool
