#include "service/mqtt/reading_queue.h"

#include <gtest/gtest.h>

#include <vector>

#include "service/mqtt/retained_topics.h"
#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;

QueuedReading At(UnixTime time) {
  return {
      0, "probe", "envir", time, {0x00, 0x27, 0xFF}
  };
}

class ReadingQueueTest : public testing::Test {
 protected:
  ReadingQueue MakeQueue() {
    return {directory_.Path("history.db"), 1h, [this](const std::string& word) { words_.push_back(word); }};
  }

  // Takes all that can be sent now, without confirming them; returns their times.
  static std::vector<UnixTime> Send(ReadingQueue& queue, std::vector<std::int64_t>* ids = nullptr) {
    std::vector<UnixTime> times;
    while (const QueuedReading* const next = queue.Next()) {
      times.push_back(next->time);
      EXPECT_EQ(next->record, (Bytes{0x00, 0x27, 0xFF}));
      if (ids != nullptr) ids->push_back(next->id);
      queue.Sent();
    }
    return times;
  }

  TempDirectory directory_;
  std::vector<std::string> words_;
};

TEST_F(ReadingQueueTest, WhatWasNotConfirmedComesAgainFirstAfterARestart) {
  {
    ReadingQueue queue = MakeQueue();
    for (const UnixTime time : {1001, 1002, 1003}) queue.Add(At(time));
    EXPECT_EQ(queue.Next(), nullptr) << "an earlier program may have left some";
    queue.Store(2000);
    std::vector<std::int64_t> ids;
    EXPECT_EQ(Send(queue, &ids), (std::vector<UnixTime>{1001, 1002, 1003}));
    queue.Confirm(ids[1]);
    queue.Confirm(ids[0]);
    EXPECT_EQ(queue.InFlight(), 1);
    queue.Store(2000);
  }
  ReadingQueue queue = MakeQueue();
  queue.Add(At(1004));
  queue.Store(2000);
  queue.Add(At(1005));
  queue.Store(2000);
  EXPECT_EQ(Send(queue), (std::vector<UnixTime>{1003, 1004, 1005}));
  EXPECT_TRUE(words_.empty());
}

TEST_F(ReadingQueueTest, ALongQueueIsNotInMemoryAndKeepsItsOrder) {
  constexpr UnixTime kCount = 7000;
  ReadingQueue queue = MakeQueue();
  for (UnixTime i = 1; i <= kCount; ++i) queue.Add(At(i));
  std::vector<UnixTime> times;
  UnixTime late = kCount;
  for (int round = 0; round < 20; ++round) {
    queue.Store(kCount);
    queue.Add(At(++late));
    std::vector<std::int64_t> ids;
    for (const UnixTime time : Send(queue, &ids)) times.push_back(time);
    EXPECT_LE(ids.size(), 3002);
    for (const std::int64_t id : ids) queue.Confirm(id);
  }
  ASSERT_EQ(times.size(), static_cast<std::size_t>(late));
  for (std::size_t i = 0; i < times.size(); ++i) ASSERT_EQ(times[i], static_cast<UnixTime>(i + 1));
}

TEST_F(ReadingQueueTest, TheOldestAreDroppedAndThatIsSaid) {
  {
    ReadingQueue queue = MakeQueue();
    for (const UnixTime time : {1000, 2000, 3000}) queue.Add(At(time));
    queue.Store(3000);
  }
  ReadingQueue queue = MakeQueue();
  queue.Store(3'600'000 + 2000);
  EXPECT_EQ(Send(queue), (std::vector<UnixTime>{2000, 3000}));
  ASSERT_EQ(words_.size(), 1);
  EXPECT_EQ(words_[0], "readings that waited too long for the broker were dropped: 1");
}

TEST(RetainedTopics, RemovesWhatAnEarlierProgramLeft) {
  const TempDirectory directory;
  const std::string path = directory.Path("history.db");
  std::vector<std::string> sent;
  const auto send = [&sent](const std::string& topic, const std::string& message) {
    sent.push_back(topic + '=' + message);
    return true;
  };
  {
    RetainedTopics topics(path);
    topics.Put("a", "1");
    topics.Put("b", "1");
    topics.Store();
    topics.Send(send);
    topics.Put("a", "1");
    topics.Put("b", "2");
    topics.Send(send);
  }
  RetainedTopics topics(path);
  topics.Put("a", "1");
  topics.Store();
  topics.Send(send);
  EXPECT_EQ(sent, (std::vector<std::string>{"a=1", "b=1", "b=2", "a=1", "b="}));
  topics.Store();
  sent.clear();
  RetainedTopics next(path);
  next.Store();
  next.Send(send);
  EXPECT_EQ(sent, (std::vector<std::string>{"a="}));
}

}  // namespace
}  // namespace fieldline::service
