#include "service/history/history_writer.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "polling/text.h"
#include "service/history/retention.h"
#include "service/history/summary.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenWrites = 1s;
constexpr auto kBetweenTries = 10s;  // of a database that can't be opened or written
constexpr auto kBetweenUpkeeps = 1min;
constexpr std::size_t kMostWaiting = 100'000;  // polls: half an hour of fifty devices polled each second
constexpr UnixTime kSettling = 30'000;         // ms that a slot is old before its values are made

}  // namespace

HistoryWriter::HistoryWriter(std::string path, std::span<const WatchedDevice> devices, const HistorySettings& settings,
                             Notice notice)
    : path_(std::move(path)),
      devices_(devices),
      settings_(settings),
      notice_(std::move(notice)),
      thread_([this](const std::stop_token& stop) { Run(stop); }) {}

HistoryWriter::~HistoryWriter() {
  thread_.request_stop();
  thread_.join();
}

void HistoryWriter::Add(HistoryEntry entry) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(entry));
  if (waiting_.size() <= kMostWaiting) return;
  waiting_.pop_front();
  ++dropped_;
}

std::uint64_t HistoryWriter::Dropped() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

void HistoryWriter::Run(const std::stop_token& stop) {
  while (!stop.stop_requested()) {
    {
      std::unique_lock lock(mutex_);
      wake_.wait_for(lock, stop, kBetweenWrites, [] { return false; });
    }
    WriteWaiting();
    KeepInOrder();
  }
  WriteWaiting();
}

void HistoryWriter::WriteWaiting() {
  if (!store_ && Clock::now() < next_try_) return;
  std::vector<HistoryEntry> entries;
  {
    const std::lock_guard lock(mutex_);
    entries.assign(std::make_move_iterator(waiting_.begin()), std::make_move_iterator(waiting_.end()));
    waiting_.clear();
  }
  try {
    try {
      WriteOnce(entries);
    } catch (const DatabaseError& error) {
      if (!error.IsDamage()) throw;
      SetAside(error.what());
      WriteOnce(entries);
    }
    if (!trouble_.empty()) notice_("the history is written again");
    trouble_.clear();
  } catch (const std::exception& error) {
    Fail(error.what());
    const std::lock_guard lock(mutex_);
    waiting_.insert(waiting_.begin(), std::make_move_iterator(entries.begin()), std::make_move_iterator(entries.end()));
    while (waiting_.size() > kMostWaiting) {
      waiting_.pop_front();
      ++dropped_;
    }
  }
}

void HistoryWriter::WriteOnce(std::span<const HistoryEntry> entries) {
  if (!store_) store_.emplace(path_, devices_);
  if (!entries.empty()) store_->Write(entries);
}

void HistoryWriter::KeepInOrder() {
  if (!store_ || Clock::now() < next_upkeep_) return;
  next_upkeep_ = Clock::now() + kBetweenUpkeeps;
  const UnixTime now = ToUnixTime(std::chrono::system_clock::now());
  try {
    Summarise(store_->database(), now - kSettling);
    RemoveOld(store_->database(), now, settings_.keep);
    if (const auto removed = Shrink(store_->database(), settings_.size)) {
      notice_("the history has reached its size: readings before " + IsoTime(ToTime(*removed), 0) + " were removed");
    }
  } catch (const DatabaseError& error) {
    if (error.IsDamage()) {
      SetAside(error.what());
    } else {
      Fail(error.what());
    }
  }
}

void HistoryWriter::SetAside(const std::string& reason) {
  store_.reset();
  const std::string aside = path_ + ".damaged-" + IsoTime(std::chrono::system_clock::now(), 0);
  std::error_code error;
  std::filesystem::rename(path_, aside, error);
  ++times_set_aside_;
  for (const char* const part : {"-wal", "-shm"}) {
    std::error_code ignored;  // it need not be there
    std::filesystem::rename(path_ + part, aside + part, ignored);
  }
  notice_("the history is damaged (" + reason + "); " +
          (error ? "it can't be set aside: " + error.message() : "it is now " + aside + ", and a new one is begun"));
}

void HistoryWriter::Fail(const std::string& reason) {
  store_.reset();
  next_try_ = Clock::now() + kBetweenTries;
  if (trouble_ == reason) return;
  trouble_ = reason;
  notice_("the history can't be written: " + reason + "; the latest polls wait in memory");
}

}  // namespace fieldline::service
