#pragma once

#include <optional>
#include <string>
#include <vector>

#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// A field of a device over a time, in parts of equal length.
struct Plot {
  struct Part {
    double least;
    double mean;  // by time
    double most;
  };

  std::string unit{};
  UnixTime from = 0;
  UnixTime step = 0;                         // ms of a part
  std::vector<std::optional<Part>> parts{};  // nothing where the device did not answer
};

constexpr int kMostParts = 2000;

// The history of a numeric field from `from` to `until`, in at most `parts` parts, 1 to kMostParts. Parts of five
// minutes and more are made of five-minute values, as far as there are any; shorter ones of readings, as far as they
// were kept. Nothing when the history has no such field. Throws DatabaseError.
std::optional<Plot> MakePlot(Database& database, const std::string& device, const std::string& field, UnixTime from,
                             UnixTime until, int parts);

}  // namespace fieldline::service
