#include "service/alarm/alarm_service.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "polling/diagnosis.h"
#include "polling/text.h"
#include "service/alarm/status_json.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr auto kTick = 1s;
constexpr auto kBetweenSaves = 5s;  // of delays that go on; changes of state are stored at once
constexpr auto kTestTime = 1min;
constexpr std::size_t kMostPolls = 100'000;  // that wait
constexpr UnixTime kFreshTest = 60'000;      // ms; an older request for a test was for another run

std::string Quoted(const std::string& name) { return '"' + Escaped(name) + '"'; }

// Whether a change is worth an event: a value near its limit begins and ends many delays.
bool IsEvent(const AlarmChange& change) {
  return change.to != AlarmState::kWaiting &&
         (change.from != AlarmState::kWaiting || change.to != AlarmState::kCleared);
}

}  // namespace

AlarmService::AlarmService(const Site& site, const std::string& history_path, ActingHands hands, Notice notice,
                           std::function<int()> times_set_aside, const TaskWorker::Limits& limits)
    : unit_(site.service.unit),
      rules_(site.alarms),
      notice_(std::move(notice)),
      evaluator_(rules_, clock_.Now()),
      alarms_(rules_.rules.size()),
      store_(history_path, notice_),
      times_set_aside_(std::move(times_set_aside)),
      known_set_aside_(times_set_aside_()),
      tasks_(unit_, rules_, clock_, store_, notice_) {
  if (IsEmpty()) return;
  if (rules_.settings.acknowledge) switch_.emplace(*rules_.settings.acknowledge, rules_, clock_.Start());
  const auto report = [this](ActingDevice device, const AlarmTask* task, const TaskWorker::Result& result) {
    Apply([&] { OnReport(device, task, result); });
  };
  tasks_.Employ(std::move(hands), report, limits);
  Apply([this] { Restore(); });
  thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

AlarmService::~AlarmService() {
  if (IsEmpty()) return;
  thread_.request_stop();
  thread_.join();
  std::vector<std::unique_ptr<TaskWorker>> workers;
  {
    // A worker that reports meanwhile hands out nothing more.
    const std::lock_guard lock(mutex_);
    workers = tasks_.Dismiss();
  }
  workers.clear();
  for (std::size_t i = 0; i < alarms_.size(); ++i) Save(i);
  store_.Flush();
}

void AlarmService::Restore() {
  const Time start = clock_.Start();
  const AlarmStore::Content content = store_.Load(clock_.WallTime(start));
  for (const auto& [name, text] : content.statuses) {
    const auto alarm = FindRule(rules_, name);
    auto saved = alarm ? ParseSavedAlarm(text) : std::nullopt;
    if (!saved) {
      store_.RemoveStatus(name);
      continue;
    }
    // After the clock was set back. Times to come would hold up delays.
    const auto clamp = [start](std::optional<Time>& time) {
      if (time) time = std::min(*time, start);
    };
    clamp(saved->status.holds_since);
    clamp(saved->status.returns_since);
    clamp(saved->duty.raised);
    saved->status.changed = std::min(saved->status.changed, start);
    saved->duty.told = std::min(saved->duty.told, start);
    evaluator_.Restore(*alarm, std::move(saved->status));
    alarms_[*alarm].duty = saved->duty;
    alarms_[*alarm].test_until = saved->test_until;
  }
  tasks_.Restore(content);
}

void AlarmService::Listen(Listener listener) {
  const std::lock_guard lock(mutex_);
  listener_ = std::move(listener);
  if (!listener_) return;
  for (std::size_t i = 0; i < alarms_.size(); ++i) listener_(ViewOf(i));
}

void AlarmService::WhenChanged(std::function<void()> changed) {
  const std::lock_guard lock(mutex_);
  changed_ = std::move(changed);
}

// Polls

void AlarmService::Add(std::size_t device, const PollResult& result) {
  using Quality = AlarmReading::Quality;
  if (IsEmpty()) return;
  Poll poll{device, Quality::kGood, result.record, Clock::now()};
  if (result.failure) poll.quality = IsLineFailure(result.failure->code) ? Quality::kLineGone : Quality::kFailed;
  {
    const std::lock_guard lock(polls_mutex_);
    polls_.push_back(std::move(poll));
    if (polls_.size() > kMostPolls) polls_.pop_front();
  }
  polls_came_.notify_one();
}

std::vector<AlarmService::Poll> AlarmService::TakePolls(const std::stop_token& stop) {
  std::unique_lock lock(polls_mutex_);
  polls_came_.wait_until(lock, stop, next_tick_, [this] { return !polls_.empty(); });
  std::vector<Poll> polls(std::make_move_iterator(polls_.begin()), std::make_move_iterator(polls_.end()));
  polls_.clear();
  return polls;
}

void AlarmService::Run(const std::stop_token& stop) {
  while (!stop.stop_requested()) {
    const std::vector<Poll> polls = TakePolls(stop);
    Apply([&] {
      for (const Poll& poll : polls) Take(poll);
      if (Clock::now() < next_tick_) return;
      next_tick_ = Clock::now() + kTick;
      Tick();
    });
  }
}

void AlarmService::Take(const Poll& poll) {
  std::vector<long long> numbers;
  const AlarmDevice& device = rules_.devices[poll.device];
  if (poll.quality == AlarmReading::Quality::kGood) {
    for (const RecordField& field : device.numbers) numbers.push_back(RawNumber(field, poll.record.data()));
  }
  const AlarmReading reading{poll.device, poll.quality, numbers};
  const AlarmTime now = clock_.At(poll.ended);
  Follow(evaluator_.Add(reading, now));
  if (switch_) TakeSwitch(reading, now);
}

// When the switch is thrown; that it is on at the start acknowledges nothing.
void AlarmService::TakeSwitch(const AlarmReading& reading, AlarmTime now) {
  switch_->Read(reading, now.time);
  const Truth is_on = switch_->Holds({}, now.time);
  if (is_on == Truth::kUnknown || is_on == switch_was_) return;
  const bool was_off = std::exchange(switch_was_, is_on) == Truth::kNo;
  if (!was_off) return;
  const std::string who = "switch " + rules_.devices[rules_.settings.acknowledge->device].name;
  for (std::size_t i = 0; i < alarms_.size(); ++i) {
    if (alarms_[i].test_until) EndTest(i, now.time, who);
    Follow(evaluator_.Acknowledge(i, now.time, who));
  }
}

void AlarmService::Tick() {
  const int set_aside = times_set_aside_();
  if (std::exchange(known_set_aside_, set_aside) != set_aside) store_.Reopen();
  clock_.FollowWallClock();
  const AlarmTime now = clock_.Now();
  Follow(evaluator_.Advance(now));
  for (const std::string& name : store_.TakeTests(clock_.WallTime(now.time) - kFreshTest)) {
    const auto alarm = FindRule(rules_, name);
    if (alarm && !NeedsAttention(StateOf(*alarm))) BeginTest(*alarm, now.time);
  }
  for (std::size_t i = 0; i < alarms_.size(); ++i) {
    if (alarms_[i].test_until && now.time >= *alarms_[i].test_until) EndTest(i, now.time, {});
    Remind(i, now.time);
  }
  tasks_.Summarise();
  if (Clock::now() < next_save_) return;
  next_save_ = Clock::now() + kBetweenSaves;
  for (std::size_t i = 0; i < alarms_.size(); ++i) Save(i);
}

// Steps

void AlarmService::Apply(const std::function<void()>& step) {
  const std::lock_guard lock(mutex_);
  step();
  Commit();
}

void AlarmService::Commit() {
  store_.Flush();
  tasks_.HandOut();
  store_.Flush();
  if (tasks_.TakeChanged()) has_changed_ = true;
  if (!std::exchange(has_changed_, false)) return;
  ++version_;
  for (const std::size_t alarm : std::exchange(touched_, {})) {
    if (listener_) listener_(ViewOf(alarm));
  }
  if (changed_) changed_();
}

AlarmState AlarmService::StateOf(std::size_t alarm) const {
  return alarms_[alarm].test_until ? AlarmState::kRaised : evaluator_.StatusOf(alarm).state;
}

void AlarmService::Follow(const AlarmEvaluator::Changes& changes) {
  for (const AlarmChange& change : changes) {
    const std::size_t alarm = change.alarm;
    const AlarmPlan& plan = rules_.rules[alarm].plan;
    const bool is_raise = change.to == AlarmState::kRaised;
    // A real raise ends a test.
    const bool was_test = alarms_[alarm].test_until.has_value();
    if (is_raise) alarms_[alarm].test_until.reset();
    const auto before =
        HeldRelays(plan, was_test ? AlarmState::kRaised : change.from, alarms_[alarm].duty.is_escalated);
    if (IsEvent(change)) Log(change);
    if (is_raise) {
      BeginRaise(alarm, change.time);
    } else {
      touched_.push_back(alarm);
    }
    ReleaseRelays(alarm, before);
    Save(alarm);
    has_changed_ = true;
  }
}

void AlarmService::Log(const AlarmChange& change) {
  const AlarmRule& rule = rules_.rules[change.alarm];
  const auto& shelving = evaluator_.StatusOf(change.alarm).shelving;
  const bool is_test = alarms_[change.alarm].test_until.has_value();
  AlarmEvent event{.time = clock_.WallTime(change.time),
                   .alarm = rule.name,
                   .severity = std::string(SeverityName(rule.severity)),
                   .was = std::string(StateName(change.from)),
                   .state = std::string(StateName(change.to)),
                   .who = change.who,
                   .is_test = is_test};
  if (change.to == AlarmState::kShelved && shelving) event.why = shelving->why;
  std::string text = "alarm " + Quoted(rule.name) + (is_test ? " (test): " : ": ") + event.state;
  if (change.cause) {
    event.device = change.cause->device;
    event.field = change.cause->field;
    event.text = change.cause->text;
    text += ", " + Escaped(event.device) + (event.field.empty() ? "" : ' ' + event.field) + ' ' + event.text;
  }
  if (!event.who.empty()) text += " by " + Escaped(event.who);
  if (!event.why.empty()) text += ": " + Escaped(event.why);
  store_.AddEvent(event);
  notice_(text);
}

void AlarmService::BeginRaise(std::size_t alarm, Time now) {
  Alarm& raised = alarms_[alarm];
  raised.duty = {now, now, false};
  ++raised.raises;
  tasks_.BeginRaise(alarm);
  AddTasks(alarm, rules_.rules[alarm].plan.actions);
  touched_.push_back(alarm);
  has_changed_ = true;
}

void AlarmService::BeginTest(std::size_t alarm, Time now) {
  alarms_[alarm].test_until = now + kTestTime;
  Log({alarm, now, evaluator_.StatusOf(alarm).state, AlarmState::kRaised, now, std::nullopt});
  BeginRaise(alarm, now);
  Save(alarm);
}

void AlarmService::EndTest(std::size_t alarm, Time now, const std::string& who) {
  const std::vector<RelayAction> before = RelaysOf(alarm);
  Log({alarm, now, AlarmState::kRaised, evaluator_.StatusOf(alarm).state, now, std::nullopt, who});
  alarms_[alarm].test_until.reset();
  ReleaseRelays(alarm, before);
  Save(alarm);
  touched_.push_back(alarm);
  has_changed_ = true;
}

// What is due while nobody has reacted.
void AlarmService::Remind(std::size_t alarm, Time now) {
  const AlarmPlan& plan = rules_.rules[alarm].plan;
  AlarmDuty& duty = alarms_[alarm].duty;
  const AlarmState state = evaluator_.StatusOf(alarm).state;
  if (alarms_[alarm].test_until) return;
  if (IsEscalationDue(plan, state, duty, now)) {
    duty.is_escalated = true;
    notice_("alarm " + Quoted(rules_.rules[alarm].name) + ": escalated, since nobody has acknowledged it");
    AddTasks(alarm, plan.escalation->actions);
    Save(alarm);
  }
  if (IsRepeatDue(plan, state, duty, now)) {
    duty.told = now;
    RepeatTasks(alarm);
    Save(alarm);
  }
}

void AlarmService::Save(std::size_t alarm) {
  const Alarm& saved = alarms_[alarm];
  store_.PutStatus(rules_.rules[alarm].name,
                   ToJsonText({evaluator_.Save(alarm), saved.duty, saved.test_until}, clock_.Offset()));
}

// What is to be done

Occasion AlarmService::OccasionOf(std::size_t alarm) const {
  const AlarmStatus& status = evaluator_.StatusOf(alarm);
  const auto raised = alarms_[alarm].duty.raised;
  const auto since = status.is_active && status.holds_since ? status.holds_since : raised;
  Occasion occasion{.unit = unit_, .rule = rules_.rules[alarm], .status = status};
  if (since) occasion.since = clock_.WallTime(*since);
  occasion.raised = clock_.WallTime(raised.value_or(Time{}));
  occasion.is_test = alarms_[alarm].test_until.has_value();
  return occasion;
}

void AlarmService::AddTasks(std::size_t alarm, const std::vector<AlarmAction>& actions) {
  for (AlarmTask& task : TasksOf(actions, OccasionOf(alarm))) tasks_.Add(std::move(task));
}

// Those for people: relay and display are as they were set.
void AlarmService::RepeatTasks(std::size_t alarm) {
  for (AlarmTask& task : TasksOf(rules_.rules[alarm].plan.actions, OccasionOf(alarm))) {
    const bool is_for_people = task.kind != AlarmTask::Kind::kRelay && task.kind != AlarmTask::Kind::kDisplay;
    if (is_for_people) tasks_.AddUnlessWaiting(std::move(task));
  }
}

std::vector<RelayAction> AlarmService::RelaysOf(std::size_t alarm) const {
  return HeldRelays(rules_.rules[alarm].plan, StateOf(alarm), alarms_[alarm].duty.is_escalated);
}

bool AlarmService::IsHeldByAnother(std::size_t alarm, const RelayAction& relay) const {
  const auto is_same = [&](const RelayAction& other) { return other.number == relay.number && other.on == relay.on; };
  for (std::size_t i = 0; i < alarms_.size(); ++i) {
    if (i != alarm && std::ranges::any_of(RelaysOf(i), is_same)) return true;
  }
  return false;
}

// Switches back what the alarm held before and holds no longer.
void AlarmService::ReleaseRelays(std::size_t alarm, const std::vector<RelayAction>& before) {
  const std::vector<RelayAction> after = RelaysOf(alarm);
  for (const RelayAction& relay : before) {
    const bool is_still_held = std::ranges::find(after, relay.number, &RelayAction::number) != after.end();
    if (is_still_held || IsHeldByAnother(alarm, relay)) continue;
    tasks_.Add(RelayTask(relay.number, !relay.on, OccasionOf(alarm)));
  }
}

void AlarmService::OnReport(ActingDevice device, const AlarmTask* task, const TaskWorker::Result& result) {
  using ResultKind = TaskWorker::Result::Kind;
  tasks_.TakeReport(device, task, result);
  if (task == nullptr) return;
  if (task->kind == AlarmTask::Kind::kPicture && task->outcome == AlarmTask::Outcome::kDone) {
    for (AlarmTask& message : PictureMessages(*task, result.reason)) tasks_.Add(std::move(message));
  }
  // A device that is absent is so for the other way, too.
  const bool is_refused = task->outcome == AlarmTask::Outcome::kFailed && result.kind == ResultKind::kRefused;
  if (const auto alarm = FindRule(rules_, task->alarm); is_refused && alarm) {
    for (AlarmTask& other : OtherWays(*task, OccasionOf(*alarm))) tasks_.AddUnlessWaiting(std::move(other));
  }
}

// For people

AlarmView AlarmService::ViewOf(std::size_t alarm) const {
  const AlarmStatus& status = evaluator_.StatusOf(alarm);
  const Alarm& own = alarms_[alarm];
  AlarmView view;
  view.rule = &rules_.rules[alarm];
  view.state = StateOf(alarm);
  view.is_test = own.test_until.has_value();
  if (own.duty.raised) view.raised = clock_.OnWall(*own.duty.raised);
  view.changed = view.is_test ? *view.raised : clock_.OnWall(status.changed);
  view.cause = view.is_test ? std::nullopt : status.cause;
  view.acknowledged_by = view.is_test ? std::string() : status.acknowledged_by;
  view.shelving = status.shelving;
  if (view.shelving) view.shelving->until = clock_.OnWall(view.shelving->until);
  view.raises = own.raises;
  view.told = tasks_.TasksOf(alarm);
  return view;
}

std::vector<AlarmView> AlarmService::Alarms() const {
  const std::lock_guard lock(mutex_);
  std::vector<AlarmView> views;
  for (std::size_t i = 0; i < alarms_.size(); ++i) views.push_back(ViewOf(i));
  return views;
}

std::vector<ActorView> AlarmService::ActorStates() const {
  const std::lock_guard lock(mutex_);
  return tasks_.Actors();
}

std::uint64_t AlarmService::Version() const {
  const std::lock_guard lock(mutex_);
  return version_;
}

AlarmService::Verdict AlarmService::Acknowledge(const std::string& alarm, const std::string& who) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = FindRule(rules_, alarm);
    if (!found) return;
    const Time now = clock_.Now().time;
    const bool is_test = alarms_[*found].test_until.has_value();
    if (is_test) EndTest(*found, now, who);
    const auto changes = evaluator_.Acknowledge(*found, now, who);
    Follow(changes);
    verdict = is_test || !changes.empty() ? Verdict::kDone : Verdict::kUseless;
  });
  return verdict;
}

AlarmService::Verdict AlarmService::Shelve(const std::string& alarm, milliseconds time, const std::string& who,
                                           const std::string& why) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = FindRule(rules_, alarm);
    if (!found) return;
    const Time now = clock_.Now().time;
    if (alarms_[*found].test_until) EndTest(*found, now, who);
    Follow(evaluator_.Shelve(*found, now, {now + time, who, why}));
    verdict = Verdict::kDone;
  });
  return verdict;
}

AlarmService::Verdict AlarmService::Unshelve(const std::string& alarm, const std::string& who) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = FindRule(rules_, alarm);
    if (!found) return;
    const auto changes = evaluator_.Unshelve(*found, clock_.Now().time, who);
    Follow(changes);
    verdict = changes.empty() ? Verdict::kUseless : Verdict::kDone;
  });
  return verdict;
}

AlarmService::Verdict AlarmService::Test(const std::string& alarm) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = FindRule(rules_, alarm);
    if (!found) return;
    verdict = NeedsAttention(StateOf(*found)) ? Verdict::kUseless : Verdict::kDone;
    if (verdict == Verdict::kDone) BeginTest(*found, clock_.Now().time);
  });
  return verdict;
}

}  // namespace fieldline::service
