#include "service/mqtt/mqtt_service.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "polling/record/poll_json.h"
#include "polling/text.h"
#include "service/alarm/alarm_json.h"
#include "service/http/device_json.h"
#include "service/mqtt/discovery.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using nlohmann::ordered_json;

constexpr char kOnline[] = "online";
constexpr char kOffline[] = "offline";
constexpr auto kBetweenSteps = 50ms;
constexpr auto kBetweenStores = 1s;
constexpr auto kBetweenLooks = 1s;     // at all devices
constexpr auto kBetweenStates = 1min;  // of a device that does not change
constexpr auto kPatience = 10s;        // with a broker that is away, before a word on it
constexpr std::size_t kMostInFlight = 100;
constexpr double kMostASecond = 1000;  // readings, when some have waited

std::string StateOf(const WatchedDevice& watched, const PollResult& result) {
  const SiteDevice& device = *watched.device;
  ordered_json json = PollHead(*device.kind, device.address, watched.line->name, device.name, result);
  AddOutcome(json, result, device.fields);
  return ToText(json);
}

// Empty when the site has no such device any more.
std::string ReadingOf(const QueuedReading& reading, const LiveState& live) {
  const auto devices = live.devices();
  const auto found = std::ranges::find_if(devices, [&](const WatchedDevice& each) {
    return each.device->name == reading.device && each.device->kind->name == reading.kind;
  });
  if (found == devices.end() || reading.record.size() < FieldsEnd(found->device->fields)) return {};
  PollResult result;
  result.time = ToTime(reading.time);
  result.record = reading.record;
  const SiteDevice& device = *found->device;
  ordered_json json = PollHead(*device.kind, device.address, found->line->name, device.name, result);
  AddOutcome(json, result, device.fields);
  json.erase("duration_ms");
  return ToText(json);
}

}  // namespace

MqttService::MqttService(const Site& site, const LiveState& live, const std::string& history_path, Notice notice,
                         std::function<int()> times_set_aside, Acknowledge acknowledge)
    : site_(site),
      settings_(*site.service.mqtt),
      live_(live),
      notice_(std::move(notice)),
      times_set_aside_(std::move(times_set_aside)),
      acknowledge_(std::move(acknowledge)),
      topics_(settings_.prefix, site.service.unit),
      retained_(history_path),
      queue_(history_path, settings_.queue, notice_),
      shown_(live.devices().size()) {
  client_.emplace(settings_, "fieldline-" + site.service.unit, topics_.Status(), kOffline,
                  MqttClient::Events{
                      .connected =
                          [this] {
                            {
                              const std::lock_guard lock(mutex_);
                              news_.connected = true;
                            }
                            is_connected_ = true;
                            wake_.notify_all();
                          },
                      .disconnected = [this] { is_connected_ = false; },
                      .failed =
                          [this](const std::string& reason) {
                            const std::lock_guard lock(mutex_);
                            news_.failure = reason;
                          },
                      .confirmed =
                          [this](int message) {
                            const std::lock_guard lock(mutex_);
                            news_.confirmed.push_back(message);
                          },
                      .received = [this](const std::string& topic, const std::string& message,
                                         bool is_old) { Receive(topic, message, is_old); },
                  });
  thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

MqttService::~MqttService() {
  thread_.request_stop();
  thread_.join();
}

void MqttService::Add(std::size_t device, const PollResult& result) {
  if (result.failure || result.record.empty()) return;
  const SiteDevice& polled = *live_.devices()[device].device;
  QueuedReading reading{0, polled.name, std::string(polled.kind->name), ToUnixTime(result.time), result.record};
  const std::lock_guard lock(mutex_);
  polls_.push_back(std::move(reading));
}

void MqttService::Show(const AlarmView& alarm) {
  const std::string message = ToText(AlarmToJson(alarm));
  const std::lock_guard lock(mutex_);
  alarms_[topics_.Alarm(alarm.rule->name)] = message;
}

// On the network's thread. What the broker kept for us is no person's word of now.
void MqttService::Receive(const std::string& topic, const std::string& message, bool is_old) {
  if (!settings_.discovery.empty() && topic == settings_.discovery + "/status") {
    const std::lock_guard lock(mutex_);
    if (message == kOnline) news_.announce = true;
    return;
  }
  if (is_old) return;
  constexpr std::size_t kMostName = 100;
  const std::string who = message.empty() || message.size() > kMostName ? "MQTT" : Escaped(message) + " (MQTT)";
  for (const AlarmRule& alarm : site_.alarms.rules) {
    if (topic == topics_.Acknowledgement(alarm.name)) acknowledge_(alarm.name, who);
  }
}

void MqttService::Run(const std::stop_token& stop) {
  retained_.Put(topics_.Status(), kOnline);
  for (const WatchedDevice& watched : live_.devices()) {
    // What the broker kept from the last time is not fresh any more.
    retained_.Put(topics_.Availability(watched.device->name), kOffline);
  }
  Announce();
  client_->Start();
  while (!stop.stop_requested()) {
    Step();
    std::unique_lock lock(mutex_);
    wake_.wait_for(lock, stop, kBetweenSteps, [this] { return news_.connected; });
  }
  Step();
  queue_.Store(ToUnixTime(std::chrono::system_clock::now()));
  SayGoodbye();
}

void MqttService::Step() {
  TakeNews();
  TakePolls();
  ShowDevices();
  const Clock::time_point now = Clock::now();
  if (now >= next_store_) {
    next_store_ = now + kBetweenStores;
    if (std::exchange(known_set_aside_, times_set_aside_()) != known_set_aside_) {
      queue_.Reopen();
      retained_.Forget();
    }
    queue_.Store(ToUnixTime(std::chrono::system_clock::now()));
    try {
      retained_.Store();
    } catch (const DatabaseError&) {
      // The queue has the same trouble, and says so.
    }
  }
  if (!is_connected_) return;
  SendRetained();
  SendReadings();
}

void MqttService::TakeNews() {
  News news;
  {
    const std::lock_guard lock(mutex_);
    news = std::exchange(news_, {});
  }
  const Clock::time_point now = Clock::now();
  if (!news.failure.empty()) failure_ = news.failure;
  if (news.connected) {
    notice_("connected to the broker " + settings_.Url());
    has_complained_ = false;
    failure_.clear();
    retained_.SendAllAgain();
    if (!settings_.discovery.empty()) client_->Subscribe(settings_.discovery + "/status");
    if (!site_.alarms.rules.empty()) client_->Subscribe(topics_.AllAcknowledgements());
  }
  if (is_connected_) {
    lost_since_ = now;
  } else if (!has_complained_ && now - lost_since_ > kPatience) {
    has_complained_ = true;
    notice_("the broker " + settings_.Url() + " can't be reached" + (failure_.empty() ? "" : " (" + failure_ + ")") +
            "; readings wait for it");
  }
  if (news.announce) Announce();
  for (const int message : news.confirmed) {
    const auto found = in_flight_.find(message);
    if (found == in_flight_.end()) continue;
    queue_.Confirm(found->second);
    in_flight_.erase(found);
  }
}

void MqttService::TakePolls() {
  std::vector<QueuedReading> polls;
  std::map<std::string, std::string> alarms;
  {
    const std::lock_guard lock(mutex_);
    polls.swap(polls_);
    alarms.swap(alarms_);
  }
  for (QueuedReading& reading : polls) queue_.Add(std::move(reading));
  for (const auto& [topic, message] : alarms) retained_.Put(topic, message);
}

void MqttService::ShowDevices() {
  const Clock::time_point now = Clock::now();
  const std::uint64_t version = live_.Version();
  const std::vector<std::size_t> changed = live_.ChangedSince(seen_);
  // A device whose polls do not come back is overdue without any change.
  const bool all = now >= next_look_;
  if (all) next_look_ = now + kBetweenLooks;
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    if (all || std::ranges::binary_search(changed, i)) ShowDevice(i, live_.Get(i), now);
  }
  seen_ = version;
}

void MqttService::ShowDevice(std::size_t device, const DeviceState& state, Clock::time_point now) {
  const WatchedDevice& watched = live_.devices()[device];
  const std::string& name = watched.device->name;
  Shown& shown = shown_[device];
  const Condition condition = state.ConditionAt(now, *watched.device);
  if (state.last && state.version != shown.version) {
    shown.version = state.version;
    const std::string code(state.last->failure ? state.last->failure->code : "");
    const bool has_changed = shown.record != state.last->record || shown.code != code || shown.condition != condition;
    const Publish publish = watched.device->publish.value_or(settings_.publish);
    if (publish == Publish::kEvery || has_changed || now - shown.at >= kBetweenStates) {
      shown.at = now;
      shown.record = state.last->record;
      shown.code = code;
      retained_.Put(topics_.State(name), StateOf(watched, *state.last));
    }
  }
  shown.condition = condition;
  retained_.Put(topics_.Availability(name), condition == Condition::kGood ? kOnline : kOffline);
}

void MqttService::SendRetained() {
  retained_.Send([this](const std::string& topic, const std::string& message) {
    return is_connected_ && client_->Publish(topic, message, true) != 0;
  });
}

void MqttService::SendReadings() {
  const Clock::time_point now = Clock::now();
  const std::chrono::duration<double> passed = now - std::exchange(allowed_at_, now);
  allowance_ = std::min(allowance_ + passed.count() * kMostASecond, kMostASecond / 10);
  while (allowance_ >= 1 && queue_.InFlight() < kMostInFlight && is_connected_) {
    const QueuedReading* const next = queue_.Next();
    if (next == nullptr) return;
    const std::int64_t id = next->id;
    const std::string message = ReadingOf(*next, live_);
    if (message.empty()) {
      queue_.Sent();
      queue_.Confirm(id);
      continue;
    }
    const int number = client_->Publish(topics_.Readings(next->device), message, false);
    if (number == 0) return;
    in_flight_[number] = id;
    queue_.Sent();
    allowance_ -= 1;
  }
}

void MqttService::Announce() {
  if (settings_.discovery.empty()) return;
  for (const WatchedDevice& watched : live_.devices()) {
    for (const auto& [topic, message] : DiscoveryOf(watched, settings_, site_.service.unit, topics_)) {
      retained_.Put(topic, message, true);
    }
  }
  for (const AlarmRule& alarm : site_.alarms.rules) {
    const auto [topic, message] = DiscoveryOf(alarm, settings_, site_.service.unit, topics_);
    retained_.Put(topic, message, true);
  }
}

void MqttService::SayGoodbye() {
  if (is_connected_) {
    for (const WatchedDevice& watched : live_.devices()) {
      client_->PublishLast(topics_.Availability(watched.device->name), kOffline);
    }
    client_->PublishLast(topics_.Status(), kOffline);
  }
  client_.reset();
}

}  // namespace fieldline::service
