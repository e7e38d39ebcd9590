#include "service/mqtt/reading_queue.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "service/history/schema.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMostInFront = 2000;
constexpr std::size_t kMostUnwritten = 100'000;  // while the database can't be written
constexpr auto kBetweenTries = 10s;
constexpr auto kBetweenWords = 1min;  // on dropped readings

}  // namespace

void ReadingQueue::Add(QueuedReading reading) {
  reading.id = ++last_id_;
  const bool is_next = !has_more_ && newest_.empty() && front_.size() < kMostInFront;
  (is_next ? front_ : newest_).push_back({std::move(reading)});
  if (newest_.size() > kMostUnwritten) {
    newest_.pop_front();
    ++dropped_;
  }
}

void ReadingQueue::Confirm(std::int64_t id) {
  const auto found = std::ranges::find(front_, id, [](const Entry& entry) { return entry.reading.id; });
  if (found == front_.end()) return;
  found->is_confirmed = true;
  while (next_ > 0 && front_.front().is_confirmed) {
    confirmed_ = front_.front().reading.id;
    front_.pop_front();
    --next_;
  }
}

void ReadingQueue::Reopen() {
  database_.reset();
  next_try_ = {};
  has_more_ = false;  // those went with the other file
  for (Entry& entry : front_) entry.is_stored = false;
}

void ReadingQueue::Store(UnixTime now) {
  if (!database_ && Clock::now() < next_try_) return;
  try {
    if (!database_) Open();
    Write(now);
    Refill();
    trouble_.clear();
  } catch (const DatabaseError& error) {
    database_.reset();
    next_try_ = Clock::now() + kBetweenTries;
    if (std::exchange(trouble_, error.what()) != trouble_) {
      notice_("readings for the broker can't be stored: " + trouble_);
    }
  }
  if (dropped_ > 0 && Clock::now() >= next_word_) {
    next_word_ = Clock::now() + kBetweenWords;
    notice_("readings that waited too long for the broker were dropped: " + std::to_string(std::exchange(dropped_, 0)));
  }
}

// What the program before left comes first.
void ReadingQueue::Open() {
  database_.emplace(path_, Database::Mode::kWrite);
  Transaction transaction(*database_);
  PrepareTables(*database_);
  transaction.Commit();
  if (std::exchange(knows_rest_, true)) return;
  const std::int64_t last = database_->Query("SELECT coalesce(max(id), 0) FROM mqtt_reading");
  if (last == 0) return;
  has_more_ = true;
  newest_.insert(newest_.begin(), std::make_move_iterator(front_.begin()), std::make_move_iterator(front_.end()));
  front_.clear();
  for (Entry& entry : newest_) entry.reading.id += last;
  last_id_ += last;
}

void ReadingQueue::Write(UnixTime now) {
  Transaction transaction(*database_);
  Statement add(*database_, "INSERT INTO mqtt_reading (id, device, kind, time, record) VALUES (?, ?, ?, ?, ?)");
  const auto store = [&](std::deque<Entry>& entries) {
    for (const Entry& entry : entries) {
      if (entry.is_stored || entry.is_confirmed) continue;
      const QueuedReading& reading = entry.reading;
      add.Bind(reading.id, reading.device, reading.kind, reading.time, reading.record).Run();
    }
  };
  store(front_);
  store(newest_);
  Statement(*database_, "DELETE FROM mqtt_reading WHERE id <= ?").Bind(confirmed_).Run();
  Statement(*database_, "DELETE FROM mqtt_reading WHERE time < ?").Bind(now - longest_.count()).Run();
  const std::int64_t too_old = database_->Query("SELECT changes()");
  transaction.Commit();

  dropped_ += static_cast<std::uint64_t>(too_old);
  for (Entry& entry : front_) entry.is_stored = true;
  has_more_ = has_more_ || !newest_.empty();
  newest_.clear();
}

void ReadingQueue::Refill() {
  if (!has_more_ || front_.size() > kMostInFront / 2) return;
  const std::int64_t after = front_.empty() ? confirmed_ : front_.back().reading.id;
  Statement find(*database_,
                 "SELECT id, device, kind, time, record FROM mqtt_reading WHERE id > ? ORDER BY id LIMIT ?");
  find.Bind(after, static_cast<std::int64_t>(kMostInFront));
  std::size_t count = 0;
  while (find.Step()) {
    const std::string record = find.Text(4);
    front_.push_back({
        {find.Integer(0), find.Text(1), find.Text(2), find.Integer(3), Bytes(record.begin(), record.end())},
        true
    });
    ++count;
  }
  has_more_ = count == kMostInFront;
}

}  // namespace fieldline::service
