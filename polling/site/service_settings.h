#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "polling/site/json_file.h"

namespace fieldline {

// How long readings are kept, and in how much room.
struct HistorySettings {
  std::chrono::milliseconds keep = std::chrono::days(90);  // every reading; five-minute values ten times as long
  std::uint64_t size = 1'000'000'000;                      // most bytes of the database
};

// What the service does besides polling. `fieldline watch` checks it and uses none of it.
struct ServiceSettings {
  std::string unit = "unit";  // the name of this unit among others
  HistorySettings history;
};

// The keys of a site file that are the service's.
constexpr std::string_view kUnitKey = "unit";
constexpr std::string_view kHistoryKey = "history";

// Reads them from the root of a site file. Throws UsageError.
ServiceSettings ReadServiceSettings(const JsonNode& root);

}  // namespace fieldline
