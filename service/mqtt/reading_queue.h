#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "polling/text.h"
#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// A good reading on its way to the broker.
struct QueuedReading {
  std::int64_t id = 0;  // in the order of the polls
  std::string device;
  std::string kind;
  UnixTime time = 0;
  Bytes record;
};

// Readings that the broker has not confirmed, in order. The oldest are in memory to be sent; all that are older than
// the last Store() are in the history's database too, so that neither an outage of the broker nor an end of the program
// loses them. It has a connection of its own to the database: the history never waits for the broker's readings.
//
// One thread uses it at a time. Throws nothing but std::bad_alloc.
class ReadingQueue {
 public:
  using Notice = std::function<void(const std::string&)>;

  // Readings are dropped when they have waited for `longest`.
  ReadingQueue(std::string path, std::chrono::milliseconds longest, Notice notice)
      : path_(std::move(path)), longest_(longest), notice_(std::move(notice)) {}

  void Add(QueuedReading reading);

  // The next that has not been sent, or null. None before the database was there: what an earlier program left in it
  // comes first.
  const QueuedReading* Next() const { return knows_rest_ && next_ < front_.size() ? &front_[next_].reading : nullptr; }
  void Sent() { ++next_; }
  void Confirm(std::int64_t id);

  // How many were sent and are not confirmed.
  std::size_t InFlight() const { return next_; }

  // Writes what came since the last call, and removes what was confirmed or is too old. Call it about once a second.
  void Store(UnixTime now);

  // Another file is at the path by now.
  void Reopen();

 private:
  using Clock = std::chrono::steady_clock;

  struct Entry {
    QueuedReading reading;
    bool is_stored = false;
    bool is_confirmed = false;
  };

  void Open();
  void Write(UnixTime now);
  void Refill();

  const std::string path_;
  const std::chrono::milliseconds longest_;
  const Notice notice_;

  std::deque<Entry> front_;     // the oldest, without a gap
  std::size_t next_ = 0;        // the first of them that was not sent
  std::deque<Entry> newest_;    // that follow on those that are in the database alone, and are not there yet
  bool has_more_ = false;       // some are in the database alone
  std::int64_t last_id_ = 0;    // of all
  std::int64_t confirmed_ = 0;  // all up to this id are
  bool knows_rest_ = false;     // what the program before left was looked for

  std::optional<Database> database_;
  std::string trouble_;  // that was told last
  Clock::time_point next_try_{};
  std::uint64_t dropped_ = 0;  // and not told yet
  Clock::time_point next_word_{};
};

}  // namespace fieldline::service
