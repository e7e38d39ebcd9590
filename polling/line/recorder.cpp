#include "polling/line/recorder.h"

#include "polling/protocol/protocol.h"

namespace fieldline {

void Recorder::OnSerRead(const BYTE* data, int count) {
  if (exchanges_.empty()) exchanges_.emplace_back();
  Exchange& exchange = exchanges_.back();
  exchange.reply.insert(exchange.reply.end(), data, data + count);
  if (!IsShown()) return;
  Show("<- ", {data, static_cast<std::size_t>(count)}, DescribeReply(exchange.request, exchange.reply));
}

void Recorder::OnSerWrite(const BYTE* data, int count) {
  exchanges_.push_back({Bytes(data, data + count), {}, std::chrono::steady_clock::now()});
  if (IsShown()) Show("-> ", exchanges_.back().request, DescribeRequest(exchanges_.back().request));
}

void Recorder::Dropped(std::span<const BYTE> bytes, std::string_view what) {
  if (IsShown()) Show("<- (" + std::string(what) + ") ", bytes, {});
}

void Recorder::Show(std::string_view mark, std::span<const BYTE> bytes, const std::string& meaning) {
  trace_->Show((line_.empty() ? "" : line_ + ' ') + std::string(mark), bytes, meaning);
}

}  // namespace fieldline
