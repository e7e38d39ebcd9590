#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "polling/site/mqtt_settings.h"

struct mosquitto;

namespace fieldline::service {

// A connection to a broker, which is made again whenever it is lost or refused, after pauses that grow up to a minute.
// The network has a thread of its own; nothing here waits for it.
class MqttClient {
 public:
  // These are called on that thread and must return at once.
  struct Events {
    std::function<void()> connected;
    std::function<void()> disconnected;
    std::function<void(const std::string& reason)> failed;  // what went wrong with a connection, or with a try
    std::function<void(int message)> confirmed;
    std::function<void(const std::string& topic, const std::string& payload, bool retained)> received;
  };

  // The broker publishes `last_will` to `will_topic`, retained, when it loses us. Throws UsageError when the password's
  // or the certificates' file can't be used.
  MqttClient(const MqttSettings& settings, const std::string& id, const std::string& will_topic,
             const std::string& last_will, Events events);

  // Sends what was published, and ends the connection. Takes a second or two at most, unless a name is looked up just
  // then.
  ~MqttClient();
  MqttClient(const MqttClient&) = delete;
  MqttClient& operator=(const MqttClient&) = delete;

  void Start();

  void Subscribe(const std::string& topic);

  // With QoS 1. Returns the number by which it is confirmed, or 0 when it can't be sent now.
  int Publish(const std::string& topic, const std::string& payload, bool retain);

  // The last words before the end: with QoS 0, which the end does not overtake.
  void PublishLast(const std::string& topic, const std::string& payload);

 private:
  void SetCallbacks();
  void Run(const std::stop_token& stop);
  void Serve(const std::stop_token& stop);
  void Tell(const std::string& reason);

  const MqttSettings settings_;
  const Events events_;
  mosquitto* handle_ = nullptr;

  std::atomic<bool> is_connected_ = false;
  bool has_told_ = false;  // why this try has failed; the first reason is the best one
  std::mutex mutex_;
  std::condition_variable_any wake_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
