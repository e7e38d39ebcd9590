#include "polling/line/trace_output.h"

#include <chrono>
#include <iostream>

#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {

TraceOutput::TraceOutput(const std::string& trace) {
  if (trace == "-") {
    kind_ = Kind::kStandardError;
  } else if (!trace.empty()) {
    if (const std::error_code error = file_.Open(trace, LineFile::Mode::kNew)) {
      throw UsageError("--trace=" + trace + ": the file can't be written: " + error.message() +
                       "; write a path that can");
    }
    kind_ = Kind::kFile;
  }
}

void TraceOutput::Show(std::string_view mark, std::span<const BYTE> bytes, std::string_view meaning) {
  constexpr std::size_t kMostOnStandardError = 512;
  const std::size_t most = kind_ == Kind::kFile ? SIZE_MAX : kMostOnStandardError;
  const std::string head = IsoTime(std::chrono::system_clock::now(), 6) + ' ' + ForTerminal(mark);
  std::string text = head + Hex(bytes, most) + '\n';
  if (!meaning.empty()) text += std::string(head.size(), ' ') + ForTerminal(meaning) + '\n';
  if (kind_ == Kind::kFile) {
    file_.Append(text);
  } else {
    std::cerr << text;  // one write, so that other threads do not split it
  }
}

}  // namespace fieldline
