#pragma once

#include <string>

#include "polling/exit_code.h"
#include "polling/site/site.h"

namespace fieldline::service {

// The database in a state directory.
std::string HistoryPath(const std::string& state_directory);

// Watches the site until Ctrl-C or a termination request. `state_directory` exists. Returns the exit status.
ExitCode RunService(const Site& site, const std::string& state_directory);

}  // namespace fieldline::service
