#include "polling/trace_output.h"

#include <chrono>
#include <iostream>

#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {

TraceOutput::TraceOutput(const std::string& trace) {
  if (trace == "-") {
    out_ = &std::cerr;
  } else if (!trace.empty()) {
    file_.open(trace);
    if (!file_) throw UsageError("--trace=" + trace + ": the file can't be written; write a path that can");
    out_ = &file_;
  }
}

void TraceOutput::Show(std::string_view mark, std::span<const BYTE> bytes, std::string_view meaning) {
  constexpr std::size_t kMostOnStandardError = 512;
  const std::size_t most = out_ == &file_ ? SIZE_MAX : kMostOnStandardError;
  const std::string head = IsoTime(std::chrono::system_clock::now(), 6) + ' ' + std::string(mark);
  const std::lock_guard lock(mutex_);
  *out_ << head << Hex(bytes, most) << '\n';
  if (!meaning.empty()) *out_ << std::string(head.size(), ' ') << meaning << '\n';
  out_->flush();
}

}  // namespace fieldline
