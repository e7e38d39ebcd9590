#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fieldline/serial/i_ser_observer.h"
#include "polling/line/trace_output.h"
#include "polling/text.h"

namespace fieldline {

// One request and the reply to it.
struct Exchange {
  Bytes request;
  Bytes reply;
  std::chrono::steady_clock::time_point sent_at{};
};

// Records the exchanges of a poll, and shows them in a trace.
class Recorder : public ISerObserver {
 public:
  // `trace` may be null for no trace, and must outlive the recorder. `line` is shown with each block when several
  // recorders share one trace.
  explicit Recorder(TraceOutput* trace, std::string line = {}) : trace_(trace), line_(std::move(line)) {}

  void OnSerRead(const BYTE* data, int count) override;
  void OnSerWrite(const BYTE* data, int count) override;

  // Shows received bytes that belong to no reply, without recording them. `what` names them, such as "stray".
  void Dropped(std::span<const BYTE> bytes, std::string_view what);

  void Clear() { exchanges_.clear(); }

  const std::vector<Exchange>& Exchanges() const { return exchanges_; }

 private:
  void Show(std::string_view mark, std::span<const BYTE> bytes, const std::string& meaning);
  bool IsShown() const { return trace_ != nullptr && trace_->IsWanted(); }

  TraceOutput* const trace_;
  const std::string line_;
  std::vector<Exchange> exchanges_;
};

}  // namespace fieldline
