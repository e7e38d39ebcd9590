#pragma once

#include <chrono>
#include <string>

#include "polling/site/json_file.h"

namespace fieldline {

// Which polls are published as the state of a device.
enum class Publish {
  kEvery,
  kChange,  // those that changed it, and one a minute
};

// "every" or "change". Throws UsageError.
Publish ReadPublish(const JsonNode& node);

// The broker that a unit reports to.
struct MqttSettings {
  std::string host{};
  int port = 0;
  bool tls = false;
  std::string prefix = "fieldline";  // of all topics
  std::string user{};
  std::string password_file{};
  std::string ca_file{};    // whose certificates are trusted; empty: those that the system trusts
  std::string discovery{};  // the prefix of Home Assistant's discovery; empty: none
  Publish publish = Publish::kEvery;
  std::chrono::milliseconds queue = std::chrono::hours(24);  // readings wait for the broker for so long

  // "mqtts://broker.example:8883"
  std::string Url() const;
};

// Reads "mqtt" of a site file. Throws UsageError. Files are not opened: who checks a site file need not be allowed to
// read them.
MqttSettings ReadMqttSettings(const JsonNode& node);

}  // namespace fieldline
