#include "sim/faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <string>

#include "tests/support/make_device.h"
#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using namespace std::chrono_literals;

const Bytes kReply = {0x01, 0x03, 0x04, 0x01, 0x23, 0xFE, 0xDC, 0x4B, 0xFC};

std::vector<Bytes> Damaged(std::uint32_t seed, std::vector<FaultRule> rules, int count) {
  const std::unique_ptr<Device> device = test::MakeDevice("envir", 1);
  Faults faults(seed, std::move(rules));
  std::vector<Bytes> damaged;
  for (int i = 0; i < count; ++i) {
    Reply reply{kReply};
    faults.Apply(*device, reply);
    damaged.push_back(reply.bytes);
  }
  return damaged;
}

TEST(Faults, HitTheRepliesOfTheirRule) {
  const auto hits = [](FaultRule rule) {
    std::string pattern;
    for (const Bytes& bytes : Damaged(1, {rule}, 7)) pattern += bytes.empty() ? 'x' : '.';
    return pattern;
  };
  EXPECT_EQ(hits({.nth = 1}), "x......");
  EXPECT_EQ(hits({.every = 3}), "..x..x.");
  EXPECT_EQ(hits({.nth = 2, .every = 3}), ".xx..x.");
  EXPECT_EQ(hits({.probability = 1}), "xxxxxxx");
  EXPECT_EQ(hits({}), ".......");
}

TEST(Faults, DamageAsTheySay) {
  FaultRule rule = {.nth = 1};
  const auto once = [&](std::uint32_t seed, Fault fault) {
    rule.fault = fault;
    return Damaged(seed, {rule}, 1)[0];
  };
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    const Bytes corrupt = once(seed, Fault::kCorrupt);
    ASSERT_EQ(corrupt.size(), kReply.size());
    int flipped = 0;
    for (std::size_t i = 0; i < kReply.size(); ++i) flipped += std::popcount<unsigned>(corrupt[i] ^ kReply[i]);
    EXPECT_EQ(flipped, 1);

    const Bytes truncated = once(seed, Fault::kTruncate);
    EXPECT_LT(truncated.size(), kReply.size());
    EXPECT_TRUE(std::equal(truncated.begin(), truncated.end(), kReply.begin()));

    const Bytes noisy = once(seed, Fault::kNoise);
    ASSERT_GT(noisy.size(), kReply.size());
    EXPECT_TRUE(std::equal(kReply.rbegin(), kReply.rend(), noisy.rbegin()));

    const Bytes trailed = once(seed, Fault::kTrail);
    ASSERT_GT(trailed.size(), kReply.size());
    EXPECT_TRUE(std::equal(kReply.begin(), kReply.end(), trailed.begin()));
  }
  EXPECT_EQ(once(1, Fault::kRepeat), test::Hex("01 03 04 01 23 FE DC 4B FC 01 03 04 01 23 FE DC 4B FC"));
  EXPECT_EQ(once(1, Fault::kAddress), test::Hex("02 03 04 01 23 FE DC 78 FC"));

  rule = {.fault = Fault::kDelay, .nth = 1, .delay = 70ms};
  Reply reply{kReply, 30ms};
  Faults(1, {rule}).Apply(*test::MakeDevice("envir", 1), reply);
  EXPECT_EQ(reply.delay, 100ms);
  EXPECT_EQ(reply.bytes, kReply);
}

TEST(Faults, FollowTheSeed) {
  const FaultRule rule = {.fault = Fault::kCorrupt, .probability = 0.3};
  const auto damaged = Damaged(42, {rule}, 100);
  EXPECT_EQ(damaged, Damaged(42, {rule}, 100));
  EXPECT_NE(damaged, Damaged(43, {rule}, 100));
  const auto intact = std::ranges::count(damaged, kReply);
  EXPECT_GT(intact, 40);
  EXPECT_LT(intact, 95);
}

}  // namespace
}  // namespace fieldline::sim
