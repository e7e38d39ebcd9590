#include "polling/watch/schedule.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using Clock = Schedule::Clock;
using std::chrono::milliseconds;
using testing::ElementsAre;

constexpr Clock::time_point kStart{1000s};

TEST(Schedule, DevicesThatAreDueTakeTurns) {
  const milliseconds intervals[] = {0ms, 0ms, 1000ms};
  Schedule schedule(intervals, kStart);
  std::vector<std::size_t> turns;
  auto now = kStart;
  for (int i = 0; i < 12; ++i, now += 100ms) {
    const auto turn = schedule.Next(now);
    ASSERT_TRUE(turn);
    turns.push_back(turn->device);
    schedule.Answered(turn->device, now + 100ms);
  }
  EXPECT_THAT(turns, ElementsAre(0, 1, 2, 0, 1, 0, 1, 0, 1, 0, 1, 2));
}

TEST(Schedule, KeepsPaceWhenPollsAreLateAndForgetsTurnsThatWereMissed) {
  const milliseconds intervals[] = {1000ms};
  Schedule schedule(intervals, kStart);
  schedule.Answered(0, kStart + 400ms);
  EXPECT_EQ(schedule.Next(kStart + 400ms)->due, kStart + 1000ms);
  schedule.Answered(0, kStart + 5s);
  EXPECT_EQ(schedule.Next(kStart + 5s)->due, kStart + 5s);
  schedule.Leave(0);
  EXPECT_FALSE(schedule.Next(kStart + 9s));
}

// A saturated line: one device is dead, the others answer at once whenever they are asked.
TEST(Schedule, ADeadDeviceTakesATwentiethOfItsLineAtMost) {
  for (const milliseconds silence : {150ms, 3000ms}) {
    const milliseconds intervals[] = {0ms, 100ms, 0ms};
    Schedule schedule(intervals, kStart);
    Clock::duration lost{0};
    int asked = 0;
    auto now = kStart;
    while (now < kStart + 1h) {
      const auto turn = schedule.Next(now);
      ASSERT_LE(turn->due, now);
      if (turn->device == 1) {
        now += silence;
        lost += silence;
        ++asked;
        schedule.Silent(1, now, silence);
      } else {
        now += 20ms;
        schedule.Answered(turn->device, now);
      }
    }
    EXPECT_LE(lost, (now - kStart) / 20 + silence);
    EXPECT_GE(asked, 1h / 120s);
  }
}

TEST(Schedule, PausesGrowUntilTheDeviceAnswersOrTheLineIsNew) {
  const milliseconds intervals[] = {1000ms};
  Schedule schedule(intervals, kStart);
  const auto pause_after_silence = [&](Clock::time_point now) {
    schedule.Silent(0, now, 10ms);
    return schedule.Next(now)->due - now;
  };
  const auto expect_pause = [&](Clock::time_point now, Clock::duration least) {
    const Clock::duration pause = pause_after_silence(now);
    EXPECT_GE(pause, least);
    EXPECT_LE(pause, least * 5 / 4);
  };
  for (const auto least : {2s, 4s, 8s, 16s, 30s, 30s}) expect_pause(kStart, least);
  schedule.Restart(kStart + 1s);
  EXPECT_EQ(schedule.Next(kStart + 1s)->due, kStart + 1s);
  expect_pause(kStart + 1s, 2s);
  schedule.Answered(0, kStart + 5s);
  EXPECT_EQ(schedule.Next(kStart + 5s)->due, kStart + 5s);
  expect_pause(kStart + 5s, 2s);
}

}  // namespace
}  // namespace fieldline
