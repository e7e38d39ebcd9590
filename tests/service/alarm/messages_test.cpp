#include <gmock/gmock.h>

#include "service/alarm/alarm_duty.h"
#include "service/alarm/message_limit.h"
#include "service/alarm/message_text.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

TEST(MessageText, FitsAnSmsInItsAlphabet) {
  const TextValues values = {
      .unit = "room-7", .alarm = "{value}", .severity = "", .device = "Kühlung", .value = "28.4 °C", .since = ""};
  EXPECT_EQ(ToBoardText(FillText("{unit}: {alarm} {device} {value}", values)), "room-7: {value} Kuehlung 28.4 C");
  EXPECT_EQ(ToBoardText("a\nb\x01 水 `\xFF"), "a b? ? '?");
  EXPECT_EQ(CutToSms(std::string(160, 'x')), std::string(160, 'x'));
  EXPECT_EQ(CutToSms(std::string(161, 'x')), std::string(157, 'x') + "...");
  // A bracket takes two places.
  EXPECT_EQ(CutToSms(std::string(80, '[')), std::string(80, '['));
  EXPECT_EQ(CutToSms(std::string(81, '[')), std::string(78, '[') + "...");
}

AlarmTask MessageTo(const char* number, const char* alarm, AlarmTask::Kind kind = AlarmTask::Kind::kSms) {
  AlarmTask task;
  task.kind = kind;
  task.target = number;
  task.alarm = alarm;
  return task;
}

TEST(MessageLimit, SendsASummaryAfterAFlood) {
  const Time start{};
  MessageLimit limit(2, "room-7");
  limit.RestoreMessage(start - 30min);
  EXPECT_TRUE(limit.Admit(start));
  EXPECT_FALSE(limit.Admit(start + 1s));
  limit.Hold(MessageTo("100", "warm"), AlarmSeverity::kLow, start + 1s);
  limit.Hold(MessageTo("100", "wet"), AlarmSeverity::kCritical, start + 2s);
  limit.Hold(MessageTo("100", "warm"), AlarmSeverity::kLow, start + 3s);
  limit.Hold(MessageTo("200", "wet", AlarmTask::Kind::kDial), AlarmSeverity::kCritical, start + 3s);
  EXPECT_THAT(limit.Take(start + 30s).messages, IsEmpty());
  const MessageLimit::Summaries summaries = limit.Take(start + 31s);
  EXPECT_EQ(summaries.told.size(), 4u);
  ASSERT_EQ(summaries.messages.size(), 2u);
  EXPECT_EQ(summaries.messages[0].target, "100");
  EXPECT_EQ(summaries.messages[0].text, "room-7: 2 more alarms: wet, warm");
  EXPECT_EQ(summaries.messages[1].kind, AlarmTask::Kind::kDial);

  // One summary an hour; a message again as soon as one is an hour old.
  limit.Hold(MessageTo("100", "warm"), AlarmSeverity::kLow, start + 1min);
  EXPECT_THAT(limit.Take(start + 59min).messages, IsEmpty());
  EXPECT_TRUE(limit.Admit(start + 30min));
  EXPECT_FALSE(limit.Admit(start + 59min));
  EXPECT_EQ(limit.Take(start + 61min).messages.size(), 1u);
}

TEST(AlarmDuty, RemindsUntilSomebodyReacts) {
  const Time start{};
  AlarmPlan plan;
  plan.actions = {
      RelayAction{1,                            true, RelayAction::While::kRaised},
      RelayAction{2,                            true,                                RelayAction::While::kActive},
      RelayAction{3, true}
  };
  plan.repeat = 30min;
  plan.escalation = Escalation{15min, {RelayAction{4, false, RelayAction::While::kActive}}};
  AlarmDuty duty{start, start, false};
  EXPECT_FALSE(IsRepeatDue(plan, AlarmState::kRaised, duty, start + 29min));
  EXPECT_TRUE(IsRepeatDue(plan, AlarmState::kRaised, duty, start + 30min));
  EXPECT_TRUE(IsRepeatDue(plan, AlarmState::kReturned, duty, start + 30min));
  EXPECT_FALSE(IsRepeatDue(plan, AlarmState::kAcknowledged, duty, start + 30min));
  EXPECT_FALSE(IsRepeatDue(plan, AlarmState::kShelved, duty, start + 30min));
  plan.until = RepeatUntil::kReturned;
  EXPECT_TRUE(IsRepeatDue(plan, AlarmState::kAcknowledged, duty, start + 30min));
  EXPECT_FALSE(IsRepeatDue(plan, AlarmState::kReturned, duty, start + 30min));

  EXPECT_FALSE(IsEscalationDue(plan, AlarmState::kRaised, duty, start + 14min));
  EXPECT_TRUE(IsEscalationDue(plan, AlarmState::kRaised, duty, start + 15min));
  EXPECT_FALSE(IsEscalationDue(plan, AlarmState::kAcknowledged, duty, start + 15min));
  duty.is_escalated = true;
  EXPECT_FALSE(IsEscalationDue(plan, AlarmState::kRaised, duty, start + 15min));

  const auto numbers = [&](AlarmState state, bool is_escalated) {
    std::vector<int> held;
    for (const RelayAction& relay : HeldRelays(plan, state, is_escalated)) held.push_back(relay.number);
    return held;
  };
  EXPECT_THAT(numbers(AlarmState::kRaised, false), testing::ElementsAre(1, 2));
  EXPECT_THAT(numbers(AlarmState::kAcknowledged, true), testing::ElementsAre(2, 4));
  EXPECT_THAT(numbers(AlarmState::kReturned, true), IsEmpty());
}

}  // namespace
}  // namespace fieldline::service
