#pragma once

#include <string>
#include <vector>

#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// What went wrong, or right again.
struct HistoryEvent {
  UnixTime began = 0;
  UnixTime ended = 0;      // of a failure, its last poll; of a change of a line the same as `began`
  std::string device{};    // of a failure; of an alarm, what raised it
  std::string line{};      // of a change of a line
  std::int64_t polls = 0;  // that failed
  std::string code{};      // empty: the line can be used again
  std::string message{};
  // Of an alarm's change of state:
  std::string alarm{};
  std::string severity{};
  std::string was{};
  std::string state{};
  std::string field{};
  std::string text{};  // the value that raised it
  std::string who{};
  std::string why{};
  bool is_test = false;
};

// Failures of a device, or of all devices and the changes of all lines and alarms when `device` is empty, that touch
// the time from `from` to `until`; the latest `most`, the latest first. Throws DatabaseError.
std::vector<HistoryEvent> ReadEvents(Database& database, const std::string& device, UnixTime from, UnixTime until,
                                     int most);

}  // namespace fieldline::service
