#include "service/alarm/alarm_service.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <utility>

#include "fieldline/platform/local_time.h"
#include "polling/diagnosis.h"
#include "polling/kind_name.h"
#include "polling/text.h"
#include "service/alarm/device_hands.h"
#include "service/alarm/message_text.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using Kind = AlarmTask::Kind;
using Outcome = AlarmTask::Outcome;
using std::chrono::milliseconds;

constexpr auto kTick = 1s;
constexpr auto kBetweenSaves = 5s;  // of delays that go on; changes of state are stored at once
constexpr auto kTestTime = 1min;
constexpr auto kClockWasSet = 2s;
constexpr std::size_t kMostPolls = 100'000;  // that wait
constexpr std::size_t kMostShown = 100;      // tasks of a raise, which may be repeated for months
constexpr std::size_t kMostSpoken = 500;     // bytes, which a frame of the board takes
constexpr UnixTime kFreshTest = 60'000;      // ms; an older request for a test was for another run
constexpr char kUsualText[] = "{alarm}: {device} {value} since {since}";

std::string Quoted(const std::string& name) { return '"' + Escaped(name) + '"'; }

// Whether a change is worth an event: a value near its limit begins and ends many delays.
bool IsEvent(const AlarmChange& change) {
  return change.to != AlarmState::kWaiting &&
         (change.from != AlarmState::kWaiting || change.to != AlarmState::kCleared);
}

const ControlledDevice* FindControlled(const Site& site, ENUM_SERDATKIND kind) {
  const auto found = std::ranges::find(site.controlled, kind, [](const auto& device) { return device.kind->number; });
  return found != site.controlled.end() ? &*found : nullptr;
}

std::vector<std::string> Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace

AlarmService::Actors AlarmService::ActorsOf(const Site& site, PictureTaker& taker) {
  Actors actors;
  if (site.alarms.rules.empty()) return actors;
  if (const auto* const board = FindControlled(site, SERDAT_ALARM)) actors.board = BoardHands(*board);
  if (const auto* const display = FindControlled(site, SERDAT_MONITOR)) actors.display = DisplayHands(*display);
  if (!site.cameras.empty()) actors.cameras = CameraHands(site, taker);
  return actors;
}

AlarmService::AlarmService(const Site& site, const std::string& history_path, Actors actors, Notice notice,
                           std::function<int()> times_set_aside, const TaskWorker::Limits& limits)
    : unit_(site.service.unit),
      rules_(site.alarms),
      notice_(std::move(notice)),
      evaluator_(rules_, At(start_clock_)),
      alarms_(rules_.rules.size()),
      store_(history_path, notice_),
      limit_(rules_.settings.messages_per_hour, unit_),
      times_set_aside_(std::move(times_set_aside)),
      known_set_aside_(times_set_aside_()) {
  if (IsEmpty()) return;
  if (rules_.settings.acknowledge) switch_.emplace(*rules_.settings.acknowledge, rules_, start_);
  const auto name_of = [&site](ENUM_SERDATKIND kind) {
    const ControlledDevice* const device = FindControlled(site, kind);
    return device != nullptr ? device->name : std::string();
  };
  TaskWorker::Limits camera_limits = limits;
  camera_limits.refused_pause = limits.refused_pause / 2;  // a picture is of the moment
  camera_limits.most_refusals = 3;
  Employ(board_, name_of(SERDAT_ALARM), std::move(actors.board), limits);
  Employ(display_, name_of(SERDAT_MONITOR), std::move(actors.display), limits);
  Employ(cameras_, "cameras", std::move(actors.cameras), camera_limits);
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
    for (Actor* const actor : {&board_, &display_, &cameras_}) workers.push_back(std::move(actor->worker));
  }
  workers.clear();
  for (std::size_t i = 0; i < alarms_.size(); ++i) Save(i);
  store_.Flush();
}

void AlarmService::Employ(Actor& actor, std::string name, TaskWorker::Hands hands, const TaskWorker::Limits& limits) {
  if (!hands.execute) return;
  actor.name = std::move(name);
  const auto report = [this, &actor](const AlarmTask* task, const TaskWorker::Result& result) {
    Apply([&] { OnReport(actor, task, result); });
  };
  actor.worker = std::make_unique<TaskWorker>(std::move(hands), report, limits);
}

void AlarmService::Restore() {
  const AlarmStore::Content content = store_.Load(WallTime(start_));
  last_task_ = content.last_task;
  for (const auto& [name, text] : content.statuses) {
    const auto alarm = Find(name);
    auto saved = alarm ? ParseSavedAlarm(text) : std::nullopt;
    if (!saved) {
      store_.RemoveStatus(name);
      continue;
    }
    // After the clock was set back. Times to come would hold up delays.
    const auto clamp = [this](std::optional<Time>& time) {
      if (time) time = std::min(*time, start_);
    };
    clamp(saved->status.holds_since);
    clamp(saved->status.returns_since);
    clamp(saved->duty.raised);
    saved->status.changed = std::min(saved->status.changed, start_);
    saved->duty.told = std::min(saved->duty.told, start_);
    evaluator_.Restore(*alarm, std::move(saved->status));
    alarms_[*alarm].duty = saved->duty;
    alarms_[*alarm].test_until = saved->test_until;
  }
  for (const AlarmTask& message : content.messages) {
    if (message.alarm.empty()) limit_.RestoreSummary(ToTime(message.created));
    const bool was_sent = message.outcome != Outcome::kHeld && message.outcome != Outcome::kSummarised;
    if (!message.alarm.empty() && was_sent) limit_.RestoreMessage(ToTime(message.created));
  }
  for (const AlarmTask& task : content.tasks) RestoreTask(task, start_);
  has_changed_ = true;
}

void AlarmService::RestoreTask(const AlarmTask& task, Time now) {
  const auto alarm = Find(task.alarm);
  if (alarm) alarms_[*alarm].tasks.push_back(task);
  if (task.outcome == Outcome::kHeld) {
    limit_.Hold(task, alarm ? rules_.rules[*alarm].severity : AlarmSeverity::kLow, now);
  } else if (task.outcome == Outcome::kWaiting) {
    ActorFor(task.kind).waiting[task.id] = task;
    begun_.push_back(task);
  }
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
  const AlarmTime now = At(poll.ended);
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
  FollowClock();
  const AlarmTime now = Now();
  Follow(evaluator_.Advance(now));
  for (const std::string& name : store_.TakeTests(WallTime(now.time) - kFreshTest)) {
    const auto alarm = Find(name);
    if (alarm && !NeedsAttention(StateOf(*alarm))) BeginTest(*alarm, now.time);
  }
  for (std::size_t i = 0; i < alarms_.size(); ++i) {
    if (alarms_[i].test_until && now.time >= *alarms_[i].test_until) EndTest(i, now.time, {});
    Remind(i, now.time);
  }
  Summarise();
  if (Clock::now() < next_save_) return;
  next_save_ = Clock::now() + kBetweenSaves;
  for (std::size_t i = 0; i < alarms_.size(); ++i) Save(i);
}

// Time

AlarmTime AlarmService::At(Clock::time_point moment) const {
  const Time time = start_ + std::chrono::duration_cast<Time::duration>(moment - start_clock_);
  return {time, LocalMinuteOfDay(WallTime(time) / 1000)};
}

void AlarmService::FollowClock() {
  const auto offset = std::chrono::round<milliseconds>(std::chrono::system_clock::now() - Now().time);
  if (std::chrono::abs(offset - offset_) > kClockWasSet) offset_ = offset;
}

// Steps

void AlarmService::Apply(const std::function<void()>& step) {
  const std::lock_guard lock(mutex_);
  step();
  Commit();
}

// What is to be done is stored before it is begun: after a kill it is done once or twice, and never not at all.
void AlarmService::Commit() {
  store_.Flush();
  for (const AlarmTask& task : std::exchange(begun_, {})) {
    Actor& actor = ActorFor(task.kind);
    if (!actor.worker) continue;
    for (AlarmTask replaced : actor.worker->Add(task)) {
      replaced.outcome = Outcome::kReplaced;
      replaced.ended = WallTime(Now().time);
      Keep(replaced);
    }
  }
  store_.Flush();
  if (!std::exchange(has_changed_, false)) return;
  ++version_;
  for (const std::size_t alarm : std::exchange(touched_, {})) {
    if (listener_) listener_(ViewOf(alarm));
  }
  if (changed_) changed_();
}

std::optional<std::size_t> AlarmService::Find(const std::string& alarm) const {
  const auto found = std::ranges::find(rules_.rules, alarm, &AlarmRule::name);
  if (found == rules_.rules.end()) return std::nullopt;
  return static_cast<std::size_t>(found - rules_.rules.begin());
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
  AlarmEvent event{.time = WallTime(change.time),
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
  std::erase_if(raised.tasks, [](const AlarmTask& task) { return task.ended != 0; });
  DoActions(alarm, rules_.rules[alarm].plan.actions, false);
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
    DoActions(alarm, plan.escalation->actions, false);
    Save(alarm);
  }
  if (IsRepeatDue(plan, state, duty, now)) {
    duty.told = now;
    DoActions(alarm, plan.actions, true);
    Save(alarm);
  }
}

void AlarmService::Save(std::size_t alarm) {
  const Alarm& saved = alarms_[alarm];
  store_.PutStatus(rules_.rules[alarm].name,
                   ToJsonText({evaluator_.Save(alarm), saved.duty, saved.test_until}, offset_));
}

// What is to be done

std::string AlarmService::Fill(std::size_t alarm, const std::string& text) const {
  const AlarmRule& rule = rules_.rules[alarm];
  const AlarmStatus& status = evaluator_.StatusOf(alarm);
  const bool is_test = alarms_[alarm].test_until.has_value();
  const auto since = status.is_active && status.holds_since ? status.holds_since : alarms_[alarm].duty.raised;
  TextValues values{.unit = unit_,
                    .alarm = rule.name,
                    .severity = std::string(SeverityName(rule.severity)),
                    .device = "no device",
                    .value = "no value",
                    .since = since ? LocalTimeText(WallTime(*since) / 1000) : std::string()};
  if (status.cause && !is_test) {
    values.device = status.cause->device;
    values.value = status.cause->text;
  }
  std::string prefix;
  if (is_test) prefix = "TEST: ";
  if (!is_test && status.state == AlarmState::kReturned) prefix = "Over: ";
  return ToBoardText(prefix + FillText(text, values));
}

AlarmTask AlarmService::TaskFor(std::size_t alarm, Kind kind, const std::string& target,
                                const std::string& text) const {
  AlarmTask task;
  task.alarm = rules_.rules[alarm].name;
  task.raised = WallTime(alarms_[alarm].duty.raised.value_or(Time{}));
  task.kind = kind;
  task.target = target;
  task.text = text;
  task.is_test = alarms_[alarm].test_until.has_value();
  return task;
}

// `again`: for a repetition, which is for people; relay and display are as they were set.
void AlarmService::DoActions(std::size_t alarm, const std::vector<AlarmAction>& actions, bool again) {
  const auto add = [&](Kind kind, const std::string& target, const std::string& text, int number = 0) {
    AlarmTask task = TaskFor(alarm, kind, target, text);
    task.number = number;
    if (!again || !IsWaiting(task)) Enqueue(std::move(task));
  };
  for (const AlarmAction& action : actions) {
    if (const auto* const sms = std::get_if<SmsAction>(&action)) {
      for (const std::string& number : sms->to) add(Kind::kSms, number, CutToSms(Fill(alarm, sms->text)));
    } else if (const auto* const dial = std::get_if<DialAction>(&action)) {
      add(Kind::kDial, dial->to, Fill(alarm, dial->text).substr(0, kMostSpoken));
    } else if (const auto* const speech = std::get_if<SpeechAction>(&action)) {
      add(Kind::kSpeech, {}, Fill(alarm, speech->text).substr(0, kMostSpoken));
    } else if (const auto* const picture = std::get_if<PictureAction>(&action)) {
      add(Kind::kPicture, picture->camera, Join(picture->mms, " "));
    } else if (const auto* const relay = std::get_if<RelayAction>(&action); relay != nullptr && !again) {
      add(Kind::kRelay, std::to_string(relay->number), {}, relay->on ? 1 : 0);
    } else if (const auto* const display = std::get_if<DisplayAction>(&action); display != nullptr && !again) {
      add(Kind::kDisplay, std::to_string(display->page), {});
    }
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
    AlarmTask task = TaskFor(alarm, Kind::kRelay, std::to_string(relay.number), {});
    task.number = relay.on ? 0 : 1;
    Enqueue(std::move(task));
  }
}

void AlarmService::Enqueue(AlarmTask task) {
  const Time now = Now().time;
  task.id = ++last_task_;
  task.created = WallTime(now);
  const auto alarm = Find(task.alarm);
  // Who tests waits for the message; a summary is what the limit is about.
  if (IsMessage(task.kind) && alarm && !limit_.Admit(now) && !task.is_test) {
    task.outcome = Outcome::kHeld;
    limit_.Hold(task, rules_.rules[*alarm].severity, now);
  } else {
    begun_.push_back(task);
  }
  if (alarm) {
    std::vector<AlarmTask>& tasks = alarms_[*alarm].tasks;
    const auto oldest = std::ranges::find_if(tasks, [](const AlarmTask& each) { return each.ended != 0; });
    if (tasks.size() >= kMostShown && oldest != tasks.end()) tasks.erase(oldest);
    tasks.push_back(task);
  }
  Keep(task);
}

void AlarmService::Keep(const AlarmTask& task) {
  has_changed_ = true;
  store_.PutTask(task);
  Actor& actor = ActorFor(task.kind);
  if (task.outcome == Outcome::kWaiting) {
    actor.waiting[task.id] = task;
  } else {
    actor.waiting.erase(task.id);
  }
  if (const auto alarm = Find(task.alarm)) {
    std::vector<AlarmTask>& tasks = alarms_[*alarm].tasks;
    if (const auto known = std::ranges::find(tasks, task.id, &AlarmTask::id); known != tasks.end()) *known = task;
  }
}

bool AlarmService::IsWaiting(const AlarmTask& task) const {
  return std::ranges::any_of(alarms_[*Find(task.alarm)].tasks, [&](const AlarmTask& other) {
    return other.ended == 0 && other.kind == task.kind && other.target == task.target;
  });
}

void AlarmService::Summarise() {
  MessageLimit::Summaries summaries = limit_.Take(Now().time);
  for (AlarmTask& task : summaries.told) {
    task.outcome = Outcome::kSummarised;
    task.ended = WallTime(Now().time);
    Keep(task);
  }
  for (AlarmTask& message : summaries.messages) {
    message.text = CutToSms(ToBoardText(message.text));
    Enqueue(std::move(message));
  }
}

AlarmService::Actor& AlarmService::ActorFor(Kind kind) {
  if (kind == Kind::kDisplay) return display_;
  return kind == Kind::kPicture ? cameras_ : board_;
}

void AlarmService::OnReport(Actor& actor, const AlarmTask* task, const TaskWorker::Result& result) {
  using ResultKind = TaskWorker::Result::Kind;
  const bool is_absent = result.kind == ResultKind::kAbsent;
  if (is_absent && actor.trouble.empty()) {
    actor.since = Now().time;
    notice_(Escaped(actor.name) + ": " + result.reason + "; what it is to do for alarms waits");
  } else if (!is_absent && !actor.trouble.empty()) {
    notice_(Escaped(actor.name) + " can be used again");
  }
  const std::string trouble = is_absent ? result.reason : std::string();
  if (actor.trouble != trouble) has_changed_ = true;
  actor.trouble = trouble;
  if (task == nullptr) return;

  AlarmTask kept = *task;
  const bool is_done = kept.outcome == Outcome::kDone;
  if (is_done) kept.reason.clear();
  Keep(kept);
  const std::string name = std::string(NameOf(kept.kind)) + (kept.target.empty() ? "" : ' ' + kept.target);
  if (result.kind == ResultKind::kRefused) {
    notice_("alarm " + Quoted(kept.alarm) + ": " + name + " failed: " + result.reason +
            (kept.outcome == Outcome::kFailed ? "; given up" : "; it is tried again"));
  }
  if (kept.kind == Kind::kPicture && is_done) SendPicture(kept, result.reason);
  // A device that is absent is so for the other way, too.
  if (kept.outcome == Outcome::kFailed && result.kind == ResultKind::kRefused) TellAnotherWay(kept);
}

void AlarmService::SendPicture(const AlarmTask& task, const std::string& path) {
  for (const std::string& number : Words(task.text)) {
    AlarmTask mms = task;
    mms = {.alarm = task.alarm,
           .raised = task.raised,
           .kind = Kind::kMms,
           .target = number,
           .text = path,
           .is_test = task.is_test};
    Enqueue(std::move(mms));
  }
}

// A call in place of an SMS that the board refuses, an SMS in place of all else. Once: two ways that both fail would
// otherwise go on for ever.
void AlarmService::TellAnotherWay(const AlarmTask& task) {
  const auto alarm = Find(task.alarm);
  if (task.is_other_way || !alarm) return;
  const auto tell = [&](Kind kind, const std::string& number, const std::string& text) {
    AlarmTask other = {.alarm = task.alarm,
                       .raised = task.raised,
                       .kind = kind,
                       .target = number,
                       .text = text,
                       .is_test = task.is_test,
                       .is_other_way = true};
    if (!IsWaiting(other)) Enqueue(std::move(other));
  };
  const std::string usual_text = CutToSms(Fill(*alarm, kUsualText));
  if (task.kind == Kind::kSms) tell(Kind::kDial, task.target, task.text);
  if (task.kind == Kind::kDial) tell(Kind::kSms, task.target, CutToSms(task.text));
  if (task.kind == Kind::kMms) tell(Kind::kSms, task.target, usual_text);
  if (task.kind == Kind::kPicture) {
    for (const std::string& number : Words(task.text)) tell(Kind::kSms, number, usual_text);
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
  if (own.duty.raised) view.raised = *own.duty.raised + offset_;
  view.changed = view.is_test ? *view.raised : status.changed + offset_;
  view.cause = view.is_test ? std::nullopt : status.cause;
  view.acknowledged_by = view.is_test ? std::string() : status.acknowledged_by;
  view.shelving = status.shelving;
  if (view.shelving) view.shelving->until += offset_;
  view.raises = own.raises;
  view.told = own.tasks;
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
  std::vector<ActorView> views;
  for (const Actor* const actor : {&board_, &display_, &cameras_}) {
    if (actor->worker) views.push_back({actor->name, actor->trouble, actor->since + offset_, actor->waiting.size()});
  }
  return views;
}

std::uint64_t AlarmService::Version() const {
  const std::lock_guard lock(mutex_);
  return version_;
}

AlarmService::Verdict AlarmService::Acknowledge(const std::string& alarm, const std::string& who) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = Find(alarm);
    if (!found) return;
    const Time now = Now().time;
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
    const auto found = Find(alarm);
    if (!found) return;
    const Time now = Now().time;
    if (alarms_[*found].test_until) EndTest(*found, now, who);
    Follow(evaluator_.Shelve(*found, now, {now + time, who, why}));
    verdict = Verdict::kDone;
  });
  return verdict;
}

AlarmService::Verdict AlarmService::Unshelve(const std::string& alarm, const std::string& who) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = Find(alarm);
    if (!found) return;
    const auto changes = evaluator_.Unshelve(*found, Now().time, who);
    Follow(changes);
    verdict = changes.empty() ? Verdict::kUseless : Verdict::kDone;
  });
  return verdict;
}

AlarmService::Verdict AlarmService::Test(const std::string& alarm) {
  Verdict verdict = Verdict::kUnknown;
  Apply([&] {
    const auto found = Find(alarm);
    if (!found) return;
    verdict = NeedsAttention(StateOf(*found)) ? Verdict::kUseless : Verdict::kDone;
    if (verdict == Verdict::kDone) BeginTest(*found, Now().time);
  });
  return verdict;
}

}  // namespace fieldline::service
