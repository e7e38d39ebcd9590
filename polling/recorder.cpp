#include "polling/recorder.h"

#include "polling/protocol/protocol.h"

namespace fieldline {

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
  if (trace_ != nullptr && trace_->IsWanted()) Show(blocks_.back());
}

void Recorder::Show(const Block& block) {
  const Exchange exchange = Exchanges().back();
  const std::string mark = (line_.empty() ? "" : line_ + ' ') + (block.sent ? "-> " : "<- ");
  trace_->Show(mark, block.bytes,
               block.sent ? DescribeRequest(exchange.request) : DescribeReply(exchange.request, exchange.reply));
}

}  // namespace fieldline
