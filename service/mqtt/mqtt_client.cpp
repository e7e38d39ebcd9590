#include "service/mqtt/mqtt_client.h"

#include <mosquitto.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "polling/read_file.h"
#include "polling/usage_error.h"

namespace fieldline::service {
namespace {

constexpr int kQos = 1;
constexpr int kKeepAlive = 30;  // s; a broker that is gone is noticed within one and a half of these
constexpr int kGlance = 500;    // ms between two looks at whether to end
constexpr std::chrono::milliseconds kShortestPause(1000);  // between two tries to connect
constexpr std::chrono::milliseconds kLongestPause(60'000);
constexpr std::chrono::seconds kPatience(1);  // with a broker that does not take our last words
constexpr char kSystemCertificates[] = "/etc/ssl/certs";

// The first line of the file.
std::string ReadPassword(const std::string& path) {
  constexpr std::size_t kMost = 4096;
  const std::string content = ReadFile(path, kMost);
  std::string password = content.substr(0, content.find_first_of("\r\n"));
  if (password.empty()) throw UsageError(path + ": its first line is empty, and should be a password");
  return password;
}

void Require(int result, const std::string& what) {
  if (result != MOSQ_ERR_SUCCESS) throw UsageError(what + ": " + mosquitto_strerror(result));
}

std::string Reason(int result) {
  return result == MOSQ_ERR_ERRNO ? std::generic_category().message(errno) : mosquitto_strerror(result);
}

// Once a program. It is never undone: threads of the library might still run then.
void Prepare() {
  static const int result = mosquitto_lib_init();
  if (result != MOSQ_ERR_SUCCESS) throw std::runtime_error("libmosquitto can't be used");
}

}  // namespace

MqttClient::MqttClient(const MqttSettings& settings, const std::string& id, const std::string& will_topic,
                       const std::string& last_will, Events events)
    : settings_(settings), events_(std::move(events)) {
  Prepare();
  const std::string password = settings.password_file.empty() ? std::string() : ReadPassword(settings.password_file);
  handle_ = mosquitto_new(id.c_str(), true, this);
  if (handle_ == nullptr) throw std::runtime_error("libmosquitto makes no client");
  try {
    Require(mosquitto_will_set(handle_, will_topic.c_str(), static_cast<int>(last_will.size()), last_will.data(), kQos,
                               true),
            settings.Url());
    if (!settings.user.empty()) {
      Require(mosquitto_username_pw_set(handle_, settings.user.c_str(), password.empty() ? nullptr : password.c_str()),
              settings.Url());
    }
    if (settings.tls) {
      const bool is_own = !settings.ca_file.empty();
      Require(mosquitto_tls_set(handle_, is_own ? settings.ca_file.c_str() : nullptr,
                                is_own ? nullptr : kSystemCertificates, nullptr, nullptr, nullptr),
              is_own ? settings.ca_file : kSystemCertificates);
    }
  } catch (...) {
    mosquitto_destroy(handle_);
    throw;
  }
  mosquitto_threaded_set(handle_, true);  // others publish while the network's thread is in its loop
  SetCallbacks();
}

void MqttClient::SetCallbacks() {
  mosquitto_connect_callback_set(handle_, [](mosquitto*, void* self, int result) {
    auto* const client = static_cast<MqttClient*>(self);
    client->is_connected_ = result == 0;
    if (result == 0) {
      client->events_.connected();
    } else {
      client->Tell(mosquitto_connack_string(result));
    }
  });
  mosquitto_publish_callback_set(
      handle_, [](mosquitto*, void* self, int message) { static_cast<MqttClient*>(self)->events_.confirmed(message); });
  mosquitto_message_callback_set(handle_, [](mosquitto*, void* self, const mosquitto_message* message) {
    std::string payload;
    if (message->payloadlen > 0) {
      payload.assign(static_cast<const char*>(message->payload), static_cast<std::size_t>(message->payloadlen));
    }
    static_cast<MqttClient*>(self)->events_.received(message->topic, payload, message->retain);
  });
  mosquitto_log_callback_set(handle_, [](mosquitto*, void* self, int level, const char* text) {
    if (level == MOSQ_LOG_ERR) static_cast<MqttClient*>(self)->Tell(text);
  });
}

MqttClient::~MqttClient() {
  thread_.request_stop();
  if (thread_.joinable()) thread_.join();
  mosquitto_destroy(handle_);
}

void MqttClient::Tell(const std::string& reason) {
  if (!std::exchange(has_told_, true)) events_.failed(reason);
}

void MqttClient::Start() {
  thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

// libmosquitto has such a loop, which ends for ever when a name can't be looked up or a certificate is refused.
void MqttClient::Run(const std::stop_token& stop) {
  auto pause = kShortestPause;
  while (!stop.stop_requested()) {
    has_told_ = false;
    const int result = mosquitto_connect_async(handle_, settings_.host.c_str(), settings_.port, kKeepAlive);
    if (result == MOSQ_ERR_SUCCESS) {
      Serve(stop);
      if (is_connected_.exchange(false)) pause = kShortestPause;
      events_.disconnected();
    } else {
      Tell(Reason(result));
    }
    std::unique_lock lock(mutex_);
    wake_.wait_for(lock, stop, pause, [] { return false; });
    pause = std::min(2 * pause, kLongestPause);
  }
}

// Until the connection is lost, or has ended in good order.
void MqttClient::Serve(const std::stop_token& stop) {
  std::optional<std::chrono::steady_clock::time_point> end;
  for (;;) {
    const int result = mosquitto_loop(handle_, kGlance, 1);
    if (result != MOSQ_ERR_SUCCESS) {
      if (!end) Tell(Reason(result));
      return;
    }
    if (stop.stop_requested() && !end) {
      if (!is_connected_) return;
      mosquitto_disconnect(handle_);
      end = std::chrono::steady_clock::now() + kPatience;
    }
    if (end && std::chrono::steady_clock::now() > *end) return;
  }
}

void MqttClient::Subscribe(const std::string& topic) { mosquitto_subscribe(handle_, nullptr, topic.c_str(), kQos); }

int MqttClient::Publish(const std::string& topic, const std::string& payload, bool retain) {
  int message = 0;
  const int result = mosquitto_publish(handle_, &message, topic.c_str(), static_cast<int>(payload.size()),
                                       payload.data(), kQos, retain);
  return result == MOSQ_ERR_SUCCESS || result == MOSQ_ERR_NO_CONN ? message : 0;
}

void MqttClient::PublishLast(const std::string& topic, const std::string& payload) {
  mosquitto_publish(handle_, nullptr, topic.c_str(), static_cast<int>(payload.size()), payload.data(), 0, true);
}

}  // namespace fieldline::service
