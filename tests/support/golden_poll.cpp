#include "tests/support/golden_poll.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "fieldline/sensor/make_driver.h"

namespace fieldline::test {
namespace {

// Polls with a new driver whose record is old throughout.
void ExpectPoll(const GoldenPoll& poll, ScriptedPort& port, int result, const Bytes& record) {
  const std::unique_ptr<CSensorBase> driver(MakeDriver(poll.kind));
  std::fill_n(driver->m_pData, record.size(), kOld);
  EXPECT_EQ(driver->GetData(&port, poll.addr + 0x700), result);
  EXPECT_EQ(ToHex({driver->m_pData, driver->m_pData + record.size()}), ToHex(record));
  EXPECT_EQ(port.calls.find_first_not_of("wr"), std::string::npos) << port.calls;
}

void Play(const GoldenPoll& poll, std::size_t count, ScriptedPort& port) {
  for (std::size_t i = 0; i < count; ++i) {
    port.Expect(poll.exchanges[i].request).Reply(poll.exchanges[i].ask, poll.exchanges[i].reply);
  }
}

// In exchange `i` so many bytes of the request are sent, and the reply, if any, is another.
void ExpectFailure(const GoldenPoll& poll, std::size_t i, int sent, const Bytes* reply) {
  SCOPED_TRACE("exchange " + std::to_string(i) + ", " + (reply ? ToHex(*reply) : std::to_string(sent) + " sent"));
  const Exchange& exchange = poll.exchanges[i];
  ScriptedPort port;
  Play(poll, i, port);
  port.ExpectButReport(exchange.request, sent);
  if (reply) port.Reply(exchange.ask, *reply);
  Bytes record(poll.record.size(), kOld);
  for (std::size_t before = 0; before < i; ++before) {
    for (const Range& range : poll.exchanges[before].writes) {
      std::copy_n(poll.record.begin() + range.position, range.length, record.begin() + range.position);
    }
  }
  ExpectPoll(poll, port, 0, record);
}

}  // namespace

Bytes Numbers(int bytes_each, const std::vector<unsigned>& numbers) {
  Bytes bytes;
  for (const unsigned number : numbers) {
    for (int i = 0; i < bytes_each; ++i) bytes.push_back(static_cast<BYTE>(number >> 8 * i & 0xFF));
  }
  return bytes;
}

void ExpectRecord(const GoldenPoll& poll) {
  ScriptedPort port;
  Play(poll, poll.exchanges.size(), port);
  ExpectPoll(poll, port, 1, poll.record);
}

void ExpectRefusal(const GoldenPoll& poll, std::size_t i, const Bytes& reply) {
  ExpectFailure(poll, i, static_cast<int>(poll.exchanges[i].request.size()), &reply);
}

void ExpectRecordAndRejectsDamage(const GoldenPoll& poll) {
  ExpectRecord(poll);

  ScriptedPort closed;
  closed.open = 0;
  ExpectPoll(poll, closed, 0, Bytes(poll.record.size(), kOld));
  EXPECT_EQ(closed.calls, "");

  for (std::size_t i = 0; i < poll.exchanges.size(); ++i) {
    const auto& [request, ask, reply, writes] = poll.exchanges[i];
    for (const int sent : {-1, static_cast<int>(request.size()) - 1}) ExpectFailure(poll, i, sent, nullptr);
    for (std::size_t length = 0; length < reply.size(); ++length) {
      ExpectRefusal(poll, i, Bytes(reply.begin(), reply.begin() + static_cast<std::ptrdiff_t>(length)));
    }
    for (std::size_t bit = 0; bit < reply.size() * 8; ++bit) {
      Bytes flipped = reply;
      flipped[bit / 8] = static_cast<BYTE>(flipped[bit / 8] ^ 1 << bit % 8);
      ExpectRefusal(poll, i, flipped);
    }
    Bytes swapped = reply;
    std::iter_swap(swapped.end() - 1, swapped.end() - 2);
    if (swapped != reply) ExpectRefusal(poll, i, swapped);
  }
}

}  // namespace fieldline::test
