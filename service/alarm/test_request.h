#pragma once

#include <ostream>
#include <string>

#include "polling/exit_code.h"
#include "polling/site/site.h"

namespace fieldline::service {

// Asks the fieldlined that runs on this history to raise an alarm as a test, by way of the database, and prints what
// comes of its actions for at most a minute. Throws UsageError when the site has no such alarm or nothing runs.
ExitCode RequestTest(const Site& site, const std::string& history_path, const std::string& alarm, std::ostream& out);

}  // namespace fieldline::service
