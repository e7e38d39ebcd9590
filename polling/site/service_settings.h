#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "polling/site/http_settings.h"
#include "polling/site/json_file.h"
#include "polling/site/mqtt_settings.h"

namespace fieldline {

// How long readings are kept, and in how much room.
struct HistorySettings {
  std::chrono::milliseconds keep = std::chrono::days(90);  // every reading; five-minute values ten times as long
  std::uint64_t size = 1'000'000'000;                      // most bytes of the database
};

// The pictures of each camera that are kept.
struct PictureSettings {
  std::chrono::milliseconds keep = std::chrono::days(30);
  std::size_t most = 1000;  // 64 KiB each at most
};

// What the service does besides polling. `fieldline watch` checks it and uses none of it.
struct ServiceSettings {
  std::string unit = "unit";  // the name of this unit among others
  HistorySettings history;
  PictureSettings pictures;
  std::optional<HttpSettings> http{};  // nothing: no page
  std::optional<MqttSettings> mqtt{};  // nothing: no broker
};

// The keys of a site file that are the service's.
constexpr std::string_view kUnitKey = "unit";
constexpr std::string_view kHistoryKey = "history";
constexpr std::string_view kPicturesKey = "pictures";
constexpr std::string_view kHttpKey = "http";
constexpr std::string_view kMqttKey = "mqtt";

// Reads them from the root of a site file. Throws UsageError.
ServiceSettings ReadServiceSettings(const JsonNode& root);

}  // namespace fieldline
