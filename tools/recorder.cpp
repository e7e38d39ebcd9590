#include "tools/recorder.h"

#include <iostream>

#include "tools/dissect.h"
#include "tools/verb.h"

namespace fieldline::tool {

Recorder::Recorder(const std::string& trace) {
  if (trace == "-") {
    trace_ = &std::cerr;
  } else if (!trace.empty()) {
    trace_file_.open(trace);
    if (!trace_file_) throw UsageError("--trace=" + trace + ": the file can't be written; write a path that can");
    trace_ = &trace_file_;
  }
}

std::vector<Exchange> Recorder::Exchanges() const {
  std::vector<Exchange> exchanges;
  for (const Block& block : blocks_) {
    if (block.sent || exchanges.empty()) exchanges.emplace_back();
    Exchange& exchange = exchanges.back();
    Bytes& bytes = block.sent ? exchange.request : exchange.reply;
    bytes.insert(bytes.end(), block.bytes.begin(), block.bytes.end());
    if (block.sent) exchange.sent_at = block.at;
  }
  return exchanges;
}

void Recorder::Add(bool sent, const BYTE* data, int count) {
  blocks_.push_back({sent, Bytes(data, data + count), std::chrono::steady_clock::now()});
  if (trace_ != nullptr) Show(blocks_.back());
}

void Recorder::Show(const Block& block) {
  const std::string time = ClockTime(std::chrono::system_clock::now());
  *trace_ << time << (block.sent ? " -> " : " <- ") << Hex(block.bytes) << '\n';
  const Exchange exchange = Exchanges().back();
  const std::string meaning =
      block.sent ? DescribeRequest(exchange.request) : DescribeReply(exchange.request, exchange.reply);
  if (!meaning.empty()) *trace_ << std::string(time.size() + 4, ' ') << meaning << '\n';
  trace_->flush();
}

}  // namespace fieldline::tool
