#include "polling/alarm/alarm_evaluator.h"

#include <gmock/gmock.h>

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using Type = AlarmCondition::Type;
using Quality = AlarmReading::Quality;

constexpr std::size_t kProbe = 0;
constexpr std::size_t kOther = 1;  // on the same line
constexpr std::size_t kUps = 2;    // on another one

AlarmCondition Number(Type type, double limit, std::size_t device = kProbe) {
  return {.type = type, .device = device, .limit = limit};
}
AlarmCondition Silent(std::size_t device, std::chrono::milliseconds time) {
  return {.type = Type::kSilentFor, .device = device, .time = time};
}

AlarmRule Rule(AlarmCondition when, std::chrono::milliseconds on_delay = 0ms) {
  AlarmRule rule;
  rule.name = "alarm";
  rule.when = std::move(when);
  rule.on_delay = on_delay;
  return rule;
}

// Times are in seconds from the start, which is at midnight. Each step gives the changes as text, "raised@12", with the
// number of the alarm before them if it is not the first.
class Alarms {
 public:
  explicit Alarms(std::vector<AlarmRule> rules) {
    const RecordField tenths{.name = "tenths",
                             .position = 0,
                             .type = FieldType::kI16,
                             .factor = 10,
                             .unit = "V",
                             .minimum = -40,
                             .maximum = 80};
    rules_.rules = std::move(rules);
    rules_.devices = {
        {"probe", 0, {tenths}},
        {"other", 0, {tenths}},
        {"ups",   1, {tenths}}
    };
    rules_.lines = {"ESL1", "ESL2"};
    Restart(0);
  }

  void Restart(int second) { evaluator_.emplace(rules_, At(second)); }

  std::string Good(int second, long long raw, std::size_t device = kProbe) {
    const long long numbers[] = {raw};
    return Text(evaluator_->Add({device, Quality::kGood, numbers}, At(second)));
  }
  std::string Failed(int second, std::size_t device = kProbe) {
    return Text(evaluator_->Add({device, Quality::kFailed}, At(second)));
  }
  std::string LineGone(int second, std::size_t device = kProbe) {
    return Text(evaluator_->Add({device, Quality::kLineGone}, At(second)));
  }
  std::string Pass(int second) { return Text(evaluator_->Advance(At(second))); }
  std::string Acknowledge(int second) { return Text(evaluator_->Acknowledge(0, At(second).time, "Ann")); }
  std::string Shelve(int second, int until) {
    return Text(evaluator_->Shelve(0, At(second).time, {At(until).time, "Ann", "repair"}));
  }

  AlarmEvaluator& operator*() { return *evaluator_; }

  static AlarmTime At(int second) {
    return {Time(std::chrono::days(20'000) + std::chrono::seconds(second)), second / 60 % 1440};
  }

 private:
  static std::string Text(const AlarmEvaluator::Changes& changes) {
    std::string text;
    for (const AlarmChange& change : changes) {
      if (!text.empty()) text += ' ';
      if (change.alarm != 0) text += std::to_string(change.alarm) + ':';
      const auto second = std::chrono::round<std::chrono::seconds>(change.time - At(0).time).count();
      text += std::string(StateName(change.to)) + '@' + std::to_string(second);
    }
    return text;
  }

  AlarmRules rules_;
  std::optional<AlarmEvaluator> evaluator_;
};

TEST(AlarmEvaluator, OnDelayEndsWhileTheLastPollIsGood) {
  Alarms alarms({Rule(Number(Type::kAbove, 28), 60s)});
  EXPECT_EQ(alarms.Good(0, 280), "");  // 28.0 is not above
  EXPECT_EQ(alarms.Good(10, 281), "waiting@10");
  EXPECT_EQ(alarms.Good(50, 279), "cleared@50");
  EXPECT_EQ(alarms.Good(60, 281), "waiting@60");
  EXPECT_EQ(alarms.Good(119, 281), "");
  EXPECT_EQ(alarms.Failed(120), "");
  EXPECT_EQ(alarms.Pass(200), "");
  EXPECT_EQ(alarms.Good(210, 305), "raised@210");
  const AlarmStatus& status = (*alarms).StatusOf(0);
  EXPECT_EQ(status.holds_since, Alarms::At(60).time);
  EXPECT_EQ(status.cause->text, "30.5 V");

  Alarms slow({Rule(Number(Type::kAbove, 28), 60s)});
  EXPECT_EQ(slow.Good(0, 281), "waiting@0");
  EXPECT_EQ(slow.Pass(60), "raised@60");  // the next poll may be an hour away
}

TEST(AlarmEvaluator, ReturnsBelowTheDeadbandAfterTheOffDelay) {
  AlarmRule rule = Rule(Number(Type::kAbove, 28));
  rule.clear = Number(Type::kBelow, 26.5);
  rule.off_delay = 20s;
  Alarms alarms({rule});
  EXPECT_EQ(alarms.Good(0, 285), "raised@0");
  EXPECT_EQ(alarms.Good(10, 265), "");  // in the deadband
  EXPECT_EQ(alarms.Good(20, 264), "");
  EXPECT_EQ(alarms.Good(30, 270), "");  // the off-delay begins again
  EXPECT_EQ(alarms.Good(40, 264), "");
  EXPECT_EQ(alarms.Failed(60), "");
  EXPECT_EQ(alarms.Pass(75), "");
  EXPECT_EQ(alarms.Good(80, 900), "");  // not plausible: neither above nor below
  EXPECT_EQ(alarms.Good(90, 264), "returned@90");
}

TEST(AlarmEvaluator, AcknowledgedBeforeOrAfterItReturns) {
  Alarms alarms({Rule(Number(Type::kAbove, 28))});
  EXPECT_EQ(alarms.Acknowledge(0), "");
  EXPECT_EQ(alarms.Good(1, 300), "raised@1");
  EXPECT_EQ(alarms.Acknowledge(2), "acknowledged@2");
  EXPECT_EQ(alarms.Good(3, 300), "");
  EXPECT_EQ(alarms.Good(4, 200), "cleared@4");
  EXPECT_EQ(alarms.Good(5, 300), "raised@5");
  EXPECT_EQ(alarms.Good(6, 200), "returned@6");
  EXPECT_EQ(alarms.Good(7, 300), "raised@7");  // not lost although the last was not acknowledged
  EXPECT_EQ(alarms.Good(8, 200), "returned@8");
  EXPECT_EQ(alarms.Acknowledge(9), "cleared@9");
}

TEST(AlarmEvaluator, ShelvedForATime) {
  Alarms alarms({Rule(Number(Type::kAbove, 28))});
  EXPECT_EQ(alarms.Shelve(0, 100), "shelved@0");
  EXPECT_EQ(alarms.Good(10, 300), "");
  EXPECT_EQ(alarms.Acknowledge(11), "");
  EXPECT_EQ(alarms.Pass(99), "");
  EXPECT_EQ(alarms.Pass(100), "raised@100");  // it still holds
  EXPECT_EQ(alarms.Acknowledge(101), "acknowledged@101");
  EXPECT_EQ(alarms.Shelve(102, 200), "shelved@102");
  EXPECT_EQ(alarms.Good(110, 200), "");
  EXPECT_EQ(alarms.Pass(200), "cleared@200");
  EXPECT_EQ(alarms.Shelve(201, 300), "shelved@201");
  EXPECT_EQ((*alarms).Unshelve(0, Alarms::At(202).time, "Bob").at(0).who, "Bob");
}

TEST(AlarmEvaluator, ADeadLineRaisesOneAlarm) {
  AlarmRule silent = Rule(Silent(kProbe, 5s));
  AlarmRule other = Rule(Silent(kOther, 5s));
  silent.depends_on = 0;
  other.depends_on = 1;  // and so on the line's alarm too
  Alarms alarms({Rule({.type = Type::kLineGone, .device = 0}, 10s), silent, other});
  alarms.Good(0, 0, kProbe);
  alarms.Good(1, 0, kOther);
  EXPECT_EQ(alarms.LineGone(2, kProbe), "waiting@2");
  EXPECT_EQ(alarms.Pass(9), "");  // both are silent, but the line's alarm waits
  EXPECT_EQ(alarms.Pass(12), "raised@12");
  EXPECT_EQ(alarms.Failed(100, kUps), "");
  EXPECT_EQ(alarms.Good(101, 0, kProbe), "returned@101");
  EXPECT_EQ(alarms.Pass(102), "");  // the other device had no time to answer yet
  EXPECT_EQ(alarms.Failed(103, kOther), "");
  EXPECT_EQ(alarms.Pass(106), "1:raised@106");  // the first device is silent again
}

TEST(AlarmEvaluator, SilenceCountsFromTheStartAndEndsWithAGoodPoll) {
  Alarms alarms({Rule(Silent(kUps, 120s))});
  EXPECT_EQ(alarms.Failed(60, kUps), "");
  EXPECT_EQ(alarms.Pass(119), "");
  EXPECT_EQ(alarms.Pass(120), "raised@120");
  EXPECT_EQ(alarms.Failed(130, kUps), "");
  EXPECT_EQ(alarms.Good(140, 0, kUps), "returned@140");
}

TEST(AlarmEvaluator, HoursCrossMidnight) {
  constexpr int kHour = 3600;
  AlarmRule rule = Rule(Number(Type::kEqual, 1));
  rule.between = {20 * 60, 6 * 60};
  Alarms alarms({rule});
  EXPECT_EQ(alarms.Good(5 * kHour, 10), "raised@18000");
  EXPECT_EQ(alarms.Failed(5 * kHour + 1), "");
  EXPECT_EQ(alarms.Pass(6 * kHour - 1), "");
  EXPECT_EQ(alarms.Pass(6 * kHour), "returned@21600");  // the hours end whatever the device says
  EXPECT_EQ(alarms.Good(19 * kHour, 10), "");
  EXPECT_EQ(alarms.Good(20 * kHour, 10), "raised@72000");
  EXPECT_EQ(alarms.Good(25 * kHour, 10), "");
}

TEST(AlarmEvaluator, AllAndAnyWithADeviceThatFails) {
  const auto both = [](Type type) {
    return AlarmCondition{
        .type = type, .parts = {Number(Type::kBelow, 18), Number(Type::kBelow, 18, kUps)}
    };
  };
  Alarms alarms({Rule(both(Type::kAll)), Rule(both(Type::kAny))});
  EXPECT_EQ(alarms.Good(0, 100), "1:raised@0");
  EXPECT_EQ(alarms.Good(1, 100, kUps), "raised@1");
  EXPECT_EQ(alarms.Failed(2), "");
  EXPECT_EQ(alarms.Good(3, 200, kUps), "returned@3");  // `any` can't tell without the first device
  EXPECT_EQ(alarms.Good(4, 100, kUps), "");            // nor can `all`
  EXPECT_EQ(alarms.Good(5, 200), "");
  EXPECT_EQ(alarms.Good(6, 200, kUps), "1:returned@6");
}

TEST(AlarmEvaluator, ChangeWithinATime) {
  AlarmCondition change = Number(Type::kChangedBy, 2);
  change.time = 60s;
  Alarms alarms({Rule(change)});
  EXPECT_EQ(alarms.Good(0, 200), "");
  EXPECT_EQ(alarms.Good(30, 210), "");
  EXPECT_EQ(alarms.Good(61, 220), "");  // 2 V, but over 61 s
  EXPECT_EQ(alarms.Good(80, 230), "raised@80");
  EXPECT_EQ(alarms.Good(160, 230), "returned@160");
}

TEST(AlarmEvaluator, BitsAndImplausibleNumbers) {
  AlarmCondition bit = Number(Type::kEqual, 1);
  bit.bit = 2;
  Alarms alarms({Rule(bit), Rule(Number(Type::kImplausible, 0)), Rule(Number(Type::kOutside, 10))});
  EXPECT_EQ(alarms.Good(0, 0b011), "2:raised@0");  // 0.3 is outside 10 to 0
  EXPECT_EQ(alarms.Good(1, 0b100), "raised@1");
  EXPECT_EQ(alarms.Good(2, 801), "1:raised@2");
  EXPECT_EQ(alarms.Good(3, 800), "returned@3 1:returned@3");
}

TEST(AlarmEvaluator, ARestartNeitherForgetsNorRepeats) {
  AlarmCondition change = Number(Type::kChangedBy, 5);
  change.time = 600s;
  Alarms alarms({Rule(Number(Type::kAbove, 28), 90s), Rule(Silent(kUps, 60s)), Rule(change)});
  EXPECT_EQ(alarms.Good(0, 290), "waiting@0");
  EXPECT_EQ(alarms.Pass(60), "1:raised@60");
  const std::vector<AlarmStatus> saved = {(*alarms).Save(0), (*alarms).Save(1), (*alarms).Save(2)};
  alarms.Restart(100);
  for (std::size_t i = 0; i < saved.size(); ++i) (*alarms).Restore(i, saved[i]);
  EXPECT_EQ(alarms.Pass(101), "");  // the UPS was not asked yet: still raised
  EXPECT_EQ(alarms.Good(102, 341), "raised@102 2:raised@102");
  EXPECT_EQ(alarms.Pass(161), "");
  EXPECT_EQ(alarms.Good(162, 341, kUps), "1:returned@162");
}

TEST(AlarmEvaluator, APauseIsNoSilence) {
  Alarms alarms({Rule(Silent(kUps, 60s)), Rule(Number(Type::kAbove, 28), 60s)});
  alarms.Good(1000, 0, kUps);
  EXPECT_EQ(alarms.Good(1000, 290), "1:waiting@1000");
  (*alarms).Resume(Alarms::At(9000));
  EXPECT_EQ(alarms.Pass(9059), "");
  EXPECT_EQ(alarms.Pass(9060), "raised@9060");
  (*alarms).Resume(Alarms::At(500));  // the clock was set back
  EXPECT_EQ(alarms.Good(559, 290), "");
  EXPECT_EQ(alarms.Good(560, 290), "1:raised@560");
}

}  // namespace
}  // namespace fieldline
