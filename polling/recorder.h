#pragma once

#include <chrono>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "fieldline/serial/i_ser_observer.h"
#include "polling/text.h"
#include "polling/trace_output.h"

namespace fieldline {

// A block of bytes as it passed through the port.
struct Block {
  bool sent;
  Bytes bytes;
  std::chrono::steady_clock::time_point at;
};

// One request and what came until the next one.
struct Exchange {
  Bytes request;
  Bytes reply;
  std::chrono::steady_clock::time_point sent_at{};
};

// Keeps what passes during a poll, and shows it if asked.
class Recorder : public ISerObserver {
 public:
  // `trace`, which outlives this, shows what passes and what it means; null for no such thing. Where several recorders
  // share one, `line` tells theirs apart.
  explicit Recorder(TraceOutput* trace, std::string line = {}) : trace_(trace), line_(std::move(line)) {}

  void OnSerRead(const BYTE* data, int count) override { Add(false, data, count); }
  void OnSerWrite(const BYTE* data, int count) override { Add(true, data, count); }

  void Clear() { blocks_.clear(); }

  std::vector<Exchange> Exchanges() const;

 private:
  void Add(bool sent, const BYTE* data, int count);
  void Show(const Block& block);

  TraceOutput* const trace_;
  const std::string line_;
  std::vector<Block> blocks_;
};

}  // namespace fieldline
