#include "service/alarm/alarm_service.h"

#include <gmock/gmock.h>

#include <future>

#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Result = TaskWorker::Result;

// A board that notes what it is asked to do, and does it unless told otherwise.
class FakeBoard {
 public:
  TaskWorker::Hands Hands() {
    return {[this](const AlarmTask& task) { return Execute(task); }, {}};
  }

  void Answer(const Result& result, const std::string& to = {}) {
    const std::lock_guard lock(mutex_);
    answer_ = result;
    to_ = to;
  }

  std::vector<std::string> Heard() const {
    const std::lock_guard lock(mutex_);
    return heard_;
  }

  // Until it has heard so much; all of it.
  std::vector<std::string> WaitFor(std::size_t count) const {
    while (Heard().size() < count) std::this_thread::sleep_for(1ms);
    return Heard();
  }

 private:
  Result Execute(const AlarmTask& task) {
    const std::lock_guard lock(mutex_);
    if (answer_.kind == Result::Kind::kAbsent) return answer_;
    const std::string detail = task.text.empty() ? std::to_string(task.number) : task.text;
    heard_.push_back(std::string(NameOf(task.kind)) + ' ' + task.target + ' ' + detail);
    return to_.empty() || heard_.back().starts_with(to_) ? answer_ : Result{};
  }

  mutable std::mutex mutex_;
  Result answer_;
  std::string to_;  // what it answers so; all when empty
  std::vector<std::string> heard_;
};

// Alarms on the unit's inputs 1 and 2; input 3 acknowledges.
constexpr char kSite[] = R"({"unit": "room-7", "lines": {
    "EIO1": {"path": "/dev/null", "devices": {"doors": {"kind": "di"}}},
    "COM3": {"path": "/dev/null/x", "settings": "115200,n,8,1", "devices": {"board": {"kind": "alarm"}}}},
  "alarms": {
    "one": {"when": {"device": "doors", "field": "input_1", "not_equal": 0},
            "do": [{"sms": {"to": ["100"], "text": "{unit}: {alarm} {value}"}},
                   {"relay": {"number": 1, "state": "on", "while": "raised"}}]},
    "two": {"when": {"device": "doors", "field": "input_2", "not_equal": 0},
            "do": [{"relay": {"number": 1, "state": "on", "while": "raised"}}]}},
  "alarm_settings": {"messages_per_hour": 3,
                     "acknowledge": {"device": "doors", "field": "input_3", "not_equal": 0}}})";

class AlarmsThatAct : public testing::Test {
 protected:
  static Site WriteAndReadSite(const TempDirectory& directory) {
    directory.WriteFile("site.json", kSite);
    return ReadSite(directory.Path("site.json"));
  }

  AlarmService& Start() {
    const TaskWorker::Limits quick = {
        .absent_pause = 1ms, .longest_absent_pause = 1ms, .refused_pause = 1ms, .most_refusals = 2};
    alarms_.emplace(
        site_, directory_.Path("history.db"),
        ActingHands{
            NamedHands{"board", board_.Hands()}
    },
        [](const std::string&) {}, [this] { return times_set_aside_.load(); }, quick);
    return *alarms_;
  }

  // A poll of the inputs, which are on or off.
  void Inputs(bool one, bool two, bool three = false) {
    PollResult result;
    result.record = {one, static_cast<BYTE>(two ? 2 : 0), static_cast<BYTE>(three ? 4 : 0), 0, 0, 0, 0, 0};
    alarms_->Add(0, result);
  }

  void WaitForState(std::size_t alarm, AlarmState state) {
    while (alarms_->Alarms()[alarm].state != state) std::this_thread::sleep_for(1ms);
  }

  const TempDirectory directory_;
  const Site site_ = WriteAndReadSite(directory_);
  FakeBoard board_;
  std::atomic<int> times_set_aside_ = 0;
  std::optional<AlarmService> alarms_;
};

TEST_F(AlarmsThatAct, ShareARelay) {
  Start();
  Inputs(true, false);
  EXPECT_THAT(board_.WaitFor(2), ElementsAre("sms 100 room-7: one 1", "relay 1 1"));
  Inputs(true, true);
  EXPECT_EQ(board_.WaitFor(3).back(), "relay 1 1");
  Inputs(false, true);
  WaitForState(0, AlarmState::kReturned);
  // The other alarm still holds it; the switch acknowledges both.
  Inputs(false, true, true);
  EXPECT_EQ(board_.WaitFor(4).back(), "relay 1 0");
  EXPECT_EQ(alarms_->Alarms()[0].state, AlarmState::kCleared);
  EXPECT_EQ(alarms_->Alarms()[1].acknowledged_by, "switch doors");
}

TEST_F(AlarmsThatAct, ARestartNeitherForgetsNorRepeats) {
  board_.Answer({Result::Kind::kAbsent, "nothing answered"});
  Start();
  Inputs(true, false);
  WaitForState(0, AlarmState::kRaised);
  while (alarms_->ActorStates()[0].trouble.empty()) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(alarms_->ActorStates()[0].trouble, "nothing answered");
  EXPECT_THAT(board_.Heard(), IsEmpty());
  alarms_.reset();

  board_.Answer({});
  Start();
  EXPECT_EQ(alarms_->Alarms()[0].state, AlarmState::kRaised);
  EXPECT_THAT(board_.WaitFor(2), ElementsAre("sms 100 room-7: one 1", "relay 1 1"));
  while (alarms_->ActorStates()[0].waiting > 0) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(alarms_->Alarms()[0].told[0].outcome, AlarmTask::Outcome::kDone);
  alarms_.reset();

  Start();
  Inputs(true, false);
  EXPECT_EQ(alarms_->Acknowledge("one", "jo"), AlarmService::Verdict::kDone);
  EXPECT_EQ(board_.WaitFor(3).back(), "relay 1 0");
  EXPECT_EQ(alarms_->Alarms()[0].told.size(), 3u);
}

TEST_F(AlarmsThatAct, CallWhomTheBoardSendsNoSms) {
  board_.Answer({Result::Kind::kRefused, "result 7"}, "sms");
  Start();
  Inputs(true, false);
  // A refused SMS holds up nothing else.
  EXPECT_THAT(board_.WaitFor(4), testing::UnorderedElementsAre("sms 100 room-7: one 1", "relay 1 1",
                                                               "sms 100 room-7: one 1", "dial 100 room-7: one 1"));
  EXPECT_EQ(alarms_->Alarms()[0].told[0].reason, "result 7");
}

TEST_F(AlarmsThatAct, HoldBackAFlood) {
  Start();
  for (int i = 0; i < 5; ++i) {
    Inputs(true, false);
    WaitForState(0, AlarmState::kRaised);
    Inputs(false, false);
    WaitForState(0, AlarmState::kReturned);
  }
  const std::vector<AlarmTask> told = alarms_->Alarms()[0].told;
  EXPECT_EQ(told.front().outcome, AlarmTask::Outcome::kHeld);
  while (alarms_->ActorStates()[0].waiting > 0) std::this_thread::sleep_for(1ms);
  const std::vector<std::string> heard = board_.Heard();
  EXPECT_EQ(std::ranges::count(heard, "sms 100 room-7: one 1"), 3);
}

TEST_F(AlarmsThatAct, KeepTheirStateInANewDatabase) {
  Start();
  Inputs(true, false);
  board_.WaitFor(2);
  std::filesystem::rename(directory_.Path("history.db"), directory_.Path("aside.db"));
  ++times_set_aside_;
  while (!std::filesystem::exists(directory_.Path("history.db"))) std::this_thread::sleep_for(1ms);
  alarms_.reset();
  Start();
  EXPECT_EQ(alarms_->Alarms()[0].state, AlarmState::kRaised);
}

TEST_F(AlarmsThatAct, AreMarkedAsATest) {
  Start();
  EXPECT_EQ(alarms_->Test("one"), AlarmService::Verdict::kDone);
  EXPECT_THAT(board_.WaitFor(2), ElementsAre("sms 100 TEST: room-7: one no value", "relay 1 1"));
  EXPECT_TRUE(alarms_->Alarms()[0].is_test);
  EXPECT_EQ(alarms_->Test("one"), AlarmService::Verdict::kUseless);
  // A real alarm ends the test, and the relay stays.
  Inputs(true, false);
  EXPECT_EQ(board_.WaitFor(3)[2], "sms 100 room-7: one 1");
  EXPECT_FALSE(alarms_->Alarms()[0].is_test);
  EXPECT_EQ(alarms_->Test("three"), AlarmService::Verdict::kUnknown);
}

}  // namespace
}  // namespace fieldline::service
