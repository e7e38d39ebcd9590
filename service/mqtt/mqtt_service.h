#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "polling/site/site.h"
#include "service/alarm/alarm_view.h"
#include "service/live_state.h"
#include "service/mqtt/mqtt_client.h"
#include "service/mqtt/mqtt_topics.h"
#include "service/mqtt/reading_queue.h"
#include "service/mqtt/retained_topics.h"

namespace fieldline::service {

// Reports the unit to an MQTT broker, as docs/mqtt.md says: the state and the availability of each device, every good
// reading, and what Home Assistant's discovery wants to know. Has a thread of its own; no poll waits for it.
class MqttService {
 public:
  // Is told, in a sentence, what a person should know.
  using Notice = std::function<void(const std::string&)>;

  // Is called on a thread of this when somebody acknowledges an alarm at the broker.
  using Acknowledge = std::function<void(const std::string& alarm, const std::string& who)>;

  // Begins at once. `site` and `live` must outlive this. `times_set_aside` counts how often another database came in
  // place of a damaged one. Throws UsageError when a file of the settings can't be used.
  MqttService(const Site& site, const LiveState& live, const std::string& history_path, Notice notice,
              std::function<int()> times_set_aside, Acknowledge acknowledge);

  // Says that the unit is offline, and keeps what the broker has not confirmed.
  ~MqttService();
  MqttService(const MqttService&) = delete;
  MqttService& operator=(const MqttService&) = delete;

  // A poll has ended. From any thread.
  void Add(std::size_t device, const PollResult& result);

  // An alarm is this now. From any thread.
  void Show(const AlarmView& alarm);

 private:
  using Clock = std::chrono::steady_clock;

  // What the network's thread has told.
  struct News {
    bool connected = false;  // since the last look
    std::vector<int> confirmed;
    std::string failure;
    bool announce = false;  // Home Assistant has started
  };

  void Receive(const std::string& topic, const std::string& message, bool is_old);
  void Run(const std::stop_token& stop);
  void Step();
  void TakeNews();
  void TakePolls();
  void ShowDevices();
  void ShowDevice(std::size_t device, const DeviceState& state, Clock::time_point now);
  void SendRetained();
  void SendReadings();
  void Announce();
  void SayGoodbye();

  const Site& site_;
  const MqttSettings& settings_;
  const LiveState& live_;
  const Notice notice_;
  const std::function<int()> times_set_aside_;
  const Acknowledge acknowledge_;
  const MqttTopics topics_;

  std::mutex mutex_;  // of the four below
  std::condition_variable_any wake_;
  News news_;
  std::vector<QueuedReading> polls_;
  std::map<std::string, std::string> alarms_;  // messages by topic

  RetainedTopics retained_;
  ReadingQueue queue_;
  std::map<int, std::int64_t> in_flight_;  // ids of readings by the number of their message
  std::atomic<bool> is_connected_ = false;
  Clock::time_point connected_since_{};
  Clock::time_point lost_since_ = Clock::now();
  bool has_complained_ = false;
  std::string failure_;  // of the connection, the last
  int known_set_aside_ = 0;

  struct Shown {
    std::uint64_t version = 0;  // of the live state
    Condition condition = Condition::kWaiting;
    Bytes record{};
    std::string code{};
    Clock::time_point at{};
  };
  std::vector<Shown> shown_;
  std::uint64_t seen_ = 0;  // version of the live state
  Clock::time_point next_look_{};
  Clock::time_point next_store_{};
  double allowance_ = 0;  // readings that may be sent now
  Clock::time_point allowed_at_ = Clock::now();

  std::optional<MqttClient> client_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
