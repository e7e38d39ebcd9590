#include "sim/alarm_board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/serial/ser_base.h"
#include "sim/line.h"
#include "tests/support/scripted_port.h"
#include "tests/support/stub_port.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::Text;
using test::ToHex;

std::string Ask(AlarmBoard& board, const char* request) {
  std::vector<Reply> replies;
  const Bytes bytes = Hex(request);
  EXPECT_EQ(board.Hear(bytes, false, replies), bytes.size()) << request;
  return replies.empty() ? "" : ToHex(replies[0].bytes);
}

TEST(AlarmBoardTest, AnswersAsTheBoardDoes) {
  AlarmBoard board;
  std::string error;
  for (const auto& [name, value] : {
           std::pair{"id",             "1234"      },
           {"status_3",       "255"       },
           {"signal_quality", "31"        },
           {"requests",       "A"         },
           {"inputs",         "4060108408"},
           {"sms_result",     "7"         }
  }) {
    EXPECT_TRUE(board.values().Set(name, value, &error)) << error;
  }
  const struct {
    const char* request;
    const char* reply;
  } cases[] = {
      {"AA 00 00 01 01 55",                            "AA 00 04 01 31 32 33 34 05 55"                                                },
      {"AA 00 00 02 02 55",                            "AA 00 04 02 00 00 00 FF FD 55"                                                },
      {"AA 00 00 06 06 55",                            "AA 00 01 06 1F 19 55"                                                         },
      {"AA 00 00 07 07 55",                            "AA 00 14 07 41 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 46 55"},
      {"AA 00 00 33 33 55",                            "AA 00 04 33 78 56 00 F2 EF 55"                                                },
      {"AA 00 04 11 31 00 41 00 61 55",                "AA 00 01 11 07 16 55"                                                         },
      {"AA 00 03 04 48 69 00 25 55",                   "AA 00 00 04 04 55"                                                            },
      {"AA 00 02 21 31 00 10 55",                      "AA 00 00 21 21 55"                                                            },
      {"AA 00 03 04 48 69 00 25 55",                   "AA 00 00 04 04 55"                                                            },
      {"AA 00 00 31 31 55",                            "AA 00 00 31 31 55"                                                            },
      {"AA 00 02 32 03 01 30 55",                      "AA 00 00 32 32 55"                                                            },
      {"AA 00 00 12 12 55",                            "AA 00 01 12 00 12 55"                                                         },
      {"AA 00 09 13 31 32 33 34 35 36 37 38 39 22 55", "AA 00 00 13 13 55"                                                            },
      {"AA 00 00 14 14 55",                            "AA 00 01 14 00 14 55"                                                         },
      {"AA 00 03 15 48 69 00 34 55",                   "AA 00 01 15 00 15 55"                                                         },
      {"AA 00 00 01 00 55",                            ""                                                                             }, // damaged
      {"AA 00 00 01 01 54",                            ""                                                                             },
      {"AA 00 00 40 40 55",                            ""                                                                             }, // unknown
  };
  for (const auto& [request, reply] : cases) EXPECT_EQ(Ask(board, request), reply) << request;
  EXPECT_EQ(board.OutOfSequence(), 0u);

  std::string outbox;
  for (const AlarmMessage& message : board.Outbox()) outbox += ToText(message) + '\n';
  EXPECT_EQ(outbox,
            "SMS \"1\" \"A\"\n"
            "call to 1: \"Hi\"\n"
            "speech: \"Hi\"\n"
            "relay 3 set to 1\n"
            "MMS \"Hi\", 9 bytes, CRC-32 cbf43926\n");

  std::vector<Reply> replies;
  for (const char* incomplete : {"AA 00 00 01 01", "AA 00 03 04 48 69 00 25", "01 AA 00 00 01 01 55", "AA 01 FB 04"}) {
    EXPECT_EQ(board.Hear(Hex(incomplete), false, replies), 0u) << incomplete;
  }
}

TEST(AlarmBoardTest, CountsFramesOutOfSequence) {
  const struct {
    std::vector<const char*> requests;
    const char* last_reply;
  } cases[] = {
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

// A board that the port reaches without a line between them. Like any port it is for one thread at a time.
class DirectPort final : public test::StubPort {
 public:
  explicit DirectPort(AlarmBoard* board) : board_(board) {}

  int Purge() override {
    waiting_.clear();
    return 1;
  }
  int Read(BYTE* data, int count) override {
    const auto given = std::min(waiting_.size(), static_cast<std::size_t>(count));
    const auto end = waiting_.begin() + static_cast<std::ptrdiff_t>(given);
    std::copy(waiting_.begin(), end, data);
    waiting_.erase(waiting_.begin(), end);
    return static_cast<int>(given);
  }
  int Write(const BYTE* data, int count) override {
    std::vector<Reply> replies;
    board_->Hear({data, static_cast<std::size_t>(count)}, false, replies);
    for (const Reply& reply : replies) waiting_.insert(waiting_.end(), reply.bytes.begin(), reply.bytes.end());
    return count;
  }

 private:
  AlarmBoard* const board_;
  Bytes waiting_;
};

class BoardOnLineTest : public testing::Test {
 protected:
  BoardOnLineTest() { port_.SetTimeout(10, 10000); }
  ~BoardOnLineTest() override {
    alarm_->InitHandler(nullptr);
    CHubAlarm::FreeInstance();
    MapDevice(L"ESL1:", nullptr);
  }

  void Plug() {
    ASSERT_TRUE(line_.Start());
    ASSERT_TRUE(MapDevice(L"ESL1:", line_.Path().c_str()));
  }

  // The name leads nowhere before the line is gone: the system may give its path to somebody else.
  void Unplug() {
    ASSERT_TRUE(MapDevice(L"ESL1:", "/nonexistent"));
    line_.Stop();
  }

  // Used by the line's thread, and so made before the line.
  std::atomic<int> frames_ = 0;
  std::atomic<int> messages_ = 0;
  std::latch under_way_{1};

  Line line_{
      {.any_baud = true, .paced = false}
  };
  AlarmBoard& board_ = line_.Add(std::make_unique<AlarmBoard>());
  CSerBase port_{SER_ESL1};
  IHubAlarm* alarm_ = CHubAlarm::GetInstance();
};

TEST_F(BoardOnLineTest, MmsArrivesByteForByte) {
  Plug();
  alarm_->InitHandler(&port_);
  ASSERT_EQ(alarm_->Alm_ctrl_init(), 1);
  char text[] = "snapshot";
  std::vector<Bytes> sent;
  for (const std::size_t size : {0u, 1u, 255u, 256u, 257u, 512u, 600u, 100000u}) {
    Bytes data(size);
    for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<BYTE>((i * 31 + i / 251) & 0xFF);
    EXPECT_EQ(alarm_->Alm_send_mms(text, data.data(), size), 0) << size;
    sent.push_back(data);
  }
  const std::vector<AlarmMessage> outbox = board_.Outbox();
  ASSERT_EQ(outbox.size(), sent.size());
  for (std::size_t i = 0; i < sent.size(); ++i) {
    EXPECT_EQ(outbox[i].text, "snapshot");
    EXPECT_TRUE(outbox[i].data == sent[i]) << sent[i].size();
  }
  EXPECT_EQ(board_.OutOfSequence(), 0u);
}

TEST_F(BoardOnLineTest, RecoversWhenThePlugIsPulledInATransfer) {
  line_.SetListener([this](Traffic traffic, std::span<const BYTE>) {
    if (traffic == Traffic::kRequest && ++frames_ == 20) under_way_.count_down();
  });
  Plug();
  alarm_->InitHandler(&port_);
  ASSERT_EQ(alarm_->Alm_ctrl_init(), 1);

  char text[] = "snapshot";
  Bytes data(10'000'000, 0x40);
  auto transfer = std::async(std::launch::async, [&] { return alarm_->Alm_send_mms(text, data.data(), data.size()); });
  under_way_.wait();
  Unplug();
  EXPECT_EQ(transfer.get(), 1);
  EXPECT_EQ(alarm_->Alm_reset_gsm(), 1);
  EXPECT_EQ(alarm_->Alm_tts_local(text), 1);

  Plug();
  EXPECT_EQ(alarm_->Alm_reset_gsm(), 0);
  EXPECT_EQ(alarm_->Alm_send_mms(text, data.data(), 600), 0);
  ASSERT_EQ(board_.Outbox().size(), 1u);
  EXPECT_EQ(board_.Outbox()[0].data.size(), 600u);
  EXPECT_EQ(board_.OutOfSequence(), 1u) << "the reset that cut the unfinished transfer off";
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
  for (int i = 0; i < operations; ++i) {
    int failed = 1;
    switch ((i + thread) % 8) {
      case 0:
        failed = alarm->Alm_send_mms(text.data(), data.data(), data.size());
        break;
      case 1:
        failed = alarm->Alm_pstn_dial(number.data(), text.data());
        break;
      case 2:
        failed = alarm->Alm_tts_local(text.data());
        break;
      case 3:
        failed = alarm->Alm_send_sms(number.data(), text.data(), &result);
        break;
      case 4:
        failed = alarm->Alm_ctrl_relay(static_cast<BYTE>(thread), 1);
        break;
      case 5:
        failed = alarm->Alm_get_sig_qty(&quality);
        break;
      case 6:
        failed = alarm->Alm_get_device_id(&id);
        break;
      case 7:
        failed = alarm->Alm_read_io(&inputs);
        break;
    }
    EXPECT_EQ(failed, 0) << "thread " << thread << ", operation " << i;
  }
}

// Eight threads; the board must see their operations one after the other, each message whole.
class EightThreadsTest : public BoardOnLineTest {
 protected:
  EightThreadsTest() {
    board_.SetListener([this](const AlarmMessage& message) {
      ++messages_;
      const bool is_mms = message.kind == AlarmMessage::Kind::kMms;
      const std::string thread = is_mms ? std::to_string(message.data.at(0)) : message.first;
      EXPECT_TRUE(!is_mms || message.data == Bytes(300, message.data[0])) << ToText(message);
      EXPECT_TRUE(thread.empty() || message.text == "text " + thread) << ToText(message);
    });
  }

  void Run(int operations) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back(Drive, alarm_, i, operations / 8);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(messages_, operations * 5 / 8);
    EXPECT_EQ(board_.OutOfSequence(), 0u);
  }
};

TEST_F(EightThreadsTest, OverALine) {
  Plug();
  alarm_->InitHandler(&port_);
  ASSERT_EQ(alarm_->Alm_ctrl_init(), 1);
  Run(2000);
}

TEST_F(EightThreadsTest, OverAPortWithoutALine) {
  DirectPort port(&board_);
  alarm_->InitHandler(&port);
  Run(10000);
  alarm_->InitHandler(nullptr);
}

}  // namespace
}  // namespace fieldline::sim
