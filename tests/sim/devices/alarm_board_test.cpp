#include "sim/devices/alarm/alarm_board.h"

#include <atomic>
#include <future>
#include <latch>
#include <thread>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/serial/ser_base.h"
#include "sim/line.h"
#include "tests/support/device_port.h"
#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::ToHex;

std::string Ask(AlarmBoard& board, const char* request) {
  std::vector<Reply> replies;
  const Bytes bytes = Hex(request);
  EXPECT_EQ(board.Receive(bytes, false, replies), bytes.size()) << request;
  return replies.empty() ? "" : ToHex(replies[0].bytes);
}

TEST(AlarmBoardTest, LeavesWhatIsDamagedIncompleteOrUnknown) {
  AlarmBoard board;
  EXPECT_EQ(Ask(board, "AA 00 00 31 31 55"), "AA 00 00 31 31 55");
  for (const char* request : {"AA 00 00 01 00 55", "AA 00 00 01 01 54", "AA 00 00 40 40 55"}) {
    EXPECT_EQ(Ask(board, request), "") << request;
  }
  std::vector<Reply> replies;
  for (const char* incomplete : {"AA 00 00 01 01", "AA 00 03 04 48 69 00 25", "01 AA 00 00 01 01 55", "AA 01 FB 04"}) {
    EXPECT_EQ(board.Receive(Hex(incomplete), false, replies), 0u) << incomplete;
  }
}

TEST(AlarmBoardTest, CountsFramesOutOfSequence) {
  const std::pair<std::vector<const char*>, const char*> cases[] = {
      {{"AA 00 01 13 40 53 55"},                                                 "AA 00 01 13 01 12 55"},
      {{"AA 00 00 14 14 55"},                                                    "AA 00 01 14 01 15 55"},
      {{"AA 00 00 12 12 55", "AA 00 03 15 48 69 00 34 55"},                      "AA 00 01 15 01 14 55"},
      {{"AA 00 00 12 12 55", "AA 00 00 12 12 55"},                               "AA 00 01 12 00 12 55"},
      {{"AA 00 00 12 12 55", "AA 00 00 14 14 55", "AA 00 00 10 10 55"},          "AA 00 00 10 10 55"   },
      {{"AA 00 02 21 31 00 10 55"},                                              "AA 00 00 21 21 55"   },
      {{"AA 00 03 04 48 69 00 25 55", "AA 00 00 10 10 55", "AA 00 00 31 31 55"}, "AA 00 00 31 31 55"   },
  };
  for (const auto& [requests, last_reply] : cases) {
    AlarmBoard board;
    std::string reply;
    for (const char* request : requests) reply = Ask(board, request);
    EXPECT_EQ(reply, last_reply);
    EXPECT_EQ(board.OutOfSequence(), 1u) << last_reply;
  }
}

class BoardTest : public testing::Test {
 protected:
  ~BoardTest() override {
    alarm_->InitHandler(nullptr);
    CHubAlarm::FreeInstance();
    MapDevice(L"ESL1:", nullptr);
  }

  IHubAlarm* alarm_ = CHubAlarm::GetInstance();
};

TEST_F(BoardTest, RecoversWhenThePlugIsPulledInATransfer) {
  std::atomic<int> frames = 0;
  std::latch under_way(1);
  Line line({.any_baud = true, .paced = false});
  AlarmBoard& board = line.Add(std::make_unique<AlarmBoard>());
  line.SetListener([&](Traffic traffic, std::span<const BYTE>) {
    if (traffic == Traffic::kRequest && ++frames == 20) under_way.count_down();
  });
  const auto plug = [&] {
    ASSERT_TRUE(line.Start());
    ASSERT_TRUE(MapDevice(L"ESL1:", line.Path().c_str()));
  };
  CSerBase port(SER_ESL1);
  port.SetTimeout(10, 10000);
  plug();
  alarm_->InitHandler(&port);
  ASSERT_EQ(alarm_->Alm_ctrl_init(), 1);

  char text[] = "snapshot";
  Bytes data(10'000'000, 0x40);
  auto transfer = std::async(std::launch::async, [&] {
    return alarm_->Alm_send_mms(text, data.data(), static_cast<unsigned long>(data.size()));
  });
  under_way.wait();
  // The name leads nowhere before the line is gone: the system may give its path to somebody else.
  ASSERT_TRUE(MapDevice(L"ESL1:", "/nonexistent"));
  line.Stop();
  EXPECT_EQ(transfer.get(), 1);
  EXPECT_EQ(alarm_->Alm_reset_gsm(), 1);

  plug();
  EXPECT_EQ(alarm_->Alm_reset_gsm(), 0);
  EXPECT_EQ(alarm_->Alm_send_mms(text, data.data(), 600), 0);
  ASSERT_EQ(board.Outbox().size(), 1u);
  EXPECT_EQ(board.Outbox()[0].data.size(), 600u);
  EXPECT_EQ(board.OutOfSequence(), 1u) << "the reset that cut the unfinished transfer off";
  alarm_->InitHandler(nullptr);
}

// Mixed operations; each kind of message carries the number of its thread.
void Drive(IHubAlarm* alarm, int thread, int operations) {
  std::string number = std::to_string(thread);
  std::string text = "text " + number;
  Bytes data(300, static_cast<BYTE>(thread));
  DEVICE_ID id;
  char quality = 0;
  unsigned long inputs = 0;
  BYTE result = 1;
  const std::function<int()> mixed[] = {
      [&] { return alarm->Alm_send_mms(text.data(), data.data(), static_cast<unsigned long>(data.size())); },
      [&] { return alarm->Alm_pstn_dial(number.data(), text.data()); },
      [&] { return alarm->Alm_tts_local(text.data()); },
      [&] { return alarm->Alm_send_sms(number.data(), text.data(), &result); },
      [&] { return alarm->Alm_ctrl_relay(static_cast<BYTE>(thread), 1); },
      [&] { return alarm->Alm_get_sig_qty(&quality); },
      [&] { return alarm->Alm_get_device_id(&id); },
      [&] { return alarm->Alm_read_io(&inputs); },
  };
  for (int i = 0; i < operations; ++i) {
    EXPECT_EQ(mixed[static_cast<std::size_t>(i + thread) % std::size(mixed)](), 0) << "thread " << thread << ", " << i;
  }
}

// The board must see the operations of eight threads one after the other, each message whole.
TEST_F(BoardTest, ServesEightThreads) {
  constexpr int kOperations = 1000;  // of each thread
  test::DevicePort port(std::make_unique<AlarmBoard>());
  auto& board = static_cast<AlarmBoard&>(port.device());
  int messages = 0;
  board.SetListener([&](const AlarmMessage& message) {
    ++messages;
    const bool is_mms = message.type == AlarmMessage::Type::kMms;
    const std::string thread = is_mms ? std::to_string(message.data.at(0)) : message.first;
    EXPECT_TRUE(!is_mms || message.data == Bytes(300, message.data[0])) << ToText(message);
    EXPECT_TRUE(thread.empty() || message.text == "text " + thread) << ToText(message);
  });
  alarm_->InitHandler(&port);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) threads.emplace_back(Drive, alarm_, i, kOperations);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(messages, 8 * kOperations * 5 / 8);
  EXPECT_EQ(board.OutOfSequence(), 0u);
  alarm_->InitHandler(nullptr);
}

}  // namespace
}  // namespace fieldline::sim
