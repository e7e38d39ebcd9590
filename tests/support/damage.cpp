#include "tests/support/damage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

namespace fieldline::test {
namespace {

constexpr BYTE kOld = 0xA5;  // what the record holds before a poll

Bytes Record(const CSensorBase& driver, int size) { return Bytes(driver.m_pData, driver.m_pData + size); }

// Polls a fresh driver whose record is old throughout; yields the result and the record.
std::pair<int, Bytes> Poll(const DamageCase& damage, ScriptedPort* port) {
  const auto driver = damage.make();
  std::fill_n(driver->m_pData, damage.record_size, kOld);
  const int result = driver->GetData(port, damage.addr);
  return {result, Record(*driver, damage.record_size)};
}

void PlayUndamaged(const DamageCase& damage, std::size_t count, ScriptedPort* port) {
  for (std::size_t i = 0; i < count; ++i) {
    const Exchange& exchange = damage.exchanges[i];
    port->Expect(exchange.request).Reply(exchange.ask, exchange.reply);
  }
}

}  // namespace

void ExpectRejectsDamage(const DamageCase& damage) {
  ScriptedPort undamaged;
  PlayUndamaged(damage, damage.exchanges.size(), &undamaged);
  const auto [good_result, good_record] = Poll(damage, &undamaged);
  ASSERT_EQ(good_result, 1) << "undamaged";

  Bytes expected(static_cast<std::size_t>(damage.record_size), kOld);
  for (std::size_t i = 0; i < damage.exchanges.size(); ++i) {
    const Exchange& exchange = damage.exchanges[i];
    const auto expect_refused = [&](const std::string& what, int sent, const Bytes* reply) {
      ScriptedPort port;
      PlayUndamaged(damage, i, &port);
      port.ExpectButReport(exchange.request, sent);
      if (reply) port.Reply(exchange.ask, *reply);
      const auto [result, record] = Poll(damage, &port);
      EXPECT_EQ(result, 0) << "exchange " << i << ", " << what;
      EXPECT_EQ(ToHex(record), ToHex(expected)) << "exchange " << i << ", " << what;
    };

    const int whole = static_cast<int>(exchange.request.size());
    expect_refused("request cut short", whole - 1, nullptr);
    expect_refused("request refused", -1, nullptr);
    for (std::size_t length = 0; length < exchange.reply.size(); ++length) {
      const Bytes cut(exchange.reply.begin(), exchange.reply.begin() + static_cast<std::ptrdiff_t>(length));
      expect_refused("reply cut to " + std::to_string(length), whole, &cut);
    }
    for (std::size_t bit = 0; bit < exchange.reply.size() * 8; ++bit) {
      Bytes flipped = exchange.reply;
      flipped[bit / 8] = static_cast<BYTE>(flipped[bit / 8] ^ 1 << bit % 8);
      expect_refused("bit " + std::to_string(bit) + " flipped", whole, &flipped);
    }
    Bytes swapped = exchange.reply;
    std::iter_swap(swapped.end() - 1, swapped.end() - 2);
    if (swapped != exchange.reply) expect_refused("last two bytes swapped", whole, &swapped);

    for (const Range& range : exchange.writes) {
      std::copy_n(good_record.begin() + range.position, range.length, expected.begin() + range.position);
    }
  }
}

}  // namespace fieldline::test
