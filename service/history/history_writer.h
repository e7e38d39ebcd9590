#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "polling/site/service_settings.h"
#include "service/history/history_store.h"

namespace fieldline::service {

// Keeps the history on a thread of its own, so that no poll waits for a disk: one transaction a second. A database
// that is damaged is set aside, and a new one begun; while one can't be written, the latest polls wait in memory.
class HistoryWriter {
 public:
  // Is told, in a sentence, what a person should know of the history.
  using Notice = std::function<void(const std::string&)>;

  // `path` is the database's. Begins at once; `devices` must outlive the writer.
  HistoryWriter(std::string path, std::span<const WatchedDevice> devices, const HistorySettings& settings,
                Notice notice);

  // Writes what is left.
  ~HistoryWriter();
  HistoryWriter(const HistoryWriter&) = delete;
  HistoryWriter& operator=(const HistoryWriter&) = delete;

  // From any thread.
  void Add(HistoryEntry entry);

  // How many polls were dropped, since too many waited.
  std::uint64_t Dropped() const;

  // How many damaged databases were set aside. From any thread.
  int TimesSetAside() const { return times_set_aside_; }

 private:
  using Clock = std::chrono::steady_clock;

  void Run(const std::stop_token& stop);
  void WriteWaiting();
  void WriteOnce(std::span<const HistoryEntry> entries);
  void KeepInOrder();
  void SetAside(const std::string& reason);
  void Fail(const std::string& reason);

  const std::string path_;
  const std::span<const WatchedDevice> devices_;
  const HistorySettings settings_;
  const Notice notice_;

  mutable std::mutex mutex_;  // of the two below
  std::deque<HistoryEntry> waiting_;
  std::uint64_t dropped_ = 0;

  std::atomic<int> times_set_aside_ = 0;
  std::optional<HistoryStore> store_;  // none while it can't be opened or written
  std::string trouble_;                // that was told last; empty: none
  Clock::time_point next_try_{};
  Clock::time_point next_upkeep_{};
  std::condition_variable_any wake_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
