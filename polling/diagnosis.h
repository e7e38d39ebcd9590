#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "fieldline/kinds.h"
#include "polling/exit_code.h"
#include "polling/site/line_config.h"
#include "polling/text.h"

namespace fieldline {

class PolledLine;
struct LineReport;

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

// After a failed poll of a device on a line, which came back at `ended`.
Failure DiagnosePoll(const Kind& kind, int address, PolledLine& line, const LineReport& report,
                     std::chrono::steady_clock::time_point ended);

// After a failed poll of the unit's own inputs.
Failure DiagnoseInputs();

}  // namespace fieldline
