#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/kinds.h"
#include "polling/exit_code.h"
#include "polling/recorder.h"
#include "polling/site/line_config.h"

namespace fieldline {

// Why something failed, as far as it can be told from outside the library.
struct Failure {
  ExitCode exit;
  std::string_view code;  // for programs, such as "no_answer"
  std::string message;    // for people
  Bytes request = {};     // the exchange that failed, where there was one
  Bytes reply = {};
};

// After a failed Open of `port`: asks the system for the reason.
Failure DiagnoseOpen(ISerBase& port, const LineConfig& line);

// After a failed poll through `port`, which is null for a kind without a line. `exchanges` is all that passed, and
// `ended` when the poll came back.
Failure DiagnosePoll(const Kind& kind, int address, ISerBase* port, const std::vector<Exchange>& exchanges,
                     std::chrono::steady_clock::time_point ended);

}  // namespace fieldline
