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

// Why something failed. The library returns only 0; the reason is found from the bytes that passed.
struct Failure {
  ExitCode exit;
  std::string_view code;  // for programs, such as "no_answer"
  std::string message;    // for people
  Bytes request = {};     // the exchange that failed; empty when there was none
  Bytes reply = {};
};

// Whether a failure with this code is that of the line, and says nothing of the device.
bool IsLineFailure(std::string_view code);

// Call after a failed Open of `port`. Asks the system for the reason.
Failure DiagnoseOpen(ISerBase& port, const LineConfig& line);

// Call after a failed poll of a device on a line, which ended at `ended`.
Failure DiagnosePoll(const Kind& kind, int address, PolledLine& line, const LineReport& report,
                     std::chrono::steady_clock::time_point ended);

// Call after a failed poll of the unit's own inputs.
Failure DiagnoseInputs();

}  // namespace fieldline
