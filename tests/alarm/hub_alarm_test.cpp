#include "fieldline/alarm/hub_alarm.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <latch>
#include <numeric>
#include <span>
#include <string_view>
#include <thread>

#include "fieldline/alarm/alarm_link.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

using testing::Each;

constexpr BYTE kOld = 0xEE;  // what a place for a result holds before an operation

struct Operation {
  const char* name;
  int (*run)(CHubAlarm* alarm, BYTE* place);
  const char* request;
  const char* reply;
  const char* result;  // what is stored
};

char kNumber[] = "1";
char kHi[] = "Hi";
char kSeven[] = "7";
char kA[] = "A";

int ReadInputs(CHubAlarm* alarm, BYTE* place) {
  unsigned long inputs = 0xEEEEEEEE;
  const int result = alarm->Alm_read_io(&inputs);
  EXPECT_EQ(inputs >> 16 >> 16, 0u) << "beyond 32 bits";
  for (int i = 0; i < 4; ++i) place[i] = static_cast<BYTE>(inputs >> 8 * i & 0xFF);
  return result;
}

// clang-format off
const Operation kOperations[] = {
    {"device id", [](CHubAlarm* a, BYTE* p) { return a->Alm_get_device_id(reinterpret_cast<DEVICE_ID*>(p)); },
     "AA 00 00 01 01 55", "AA 00 04 01 11 22 33 44 45 55", "11 22 33 44"},
    {"status", [](CHubAlarm* a, BYTE* p) { return a->Alm_get_status(reinterpret_cast<DEVICE_STATUS*>(p)); },
     "AA 00 00 02 02 55", "AA 00 04 02 01 02 03 04 06 55", "01 02 03 04"},
    {"clear text", [](CHubAlarm* a, BYTE*) { return a->Alm_clr_tts_text(); },
     "AA 00 00 03 03 55", "AA 00 00 03 03 55", ""},
    {"set text", [](CHubAlarm* a, BYTE*) { return a->Alm_set_tts_text(kHi); },
     "AA 00 03 04 48 69 00 25 55", "AA 00 00 04 04 55", ""},
    {"snapshot", [](CHubAlarm* a, BYTE*) { return a->Alm_set_snapshot(kSeven); },
     "AA 00 02 05 37 00 32 55", "AA 00 00 05 05 55", ""},
    {"signal quality", [](CHubAlarm* a, BYTE* p) { return a->Alm_get_sig_qty(reinterpret_cast<char*>(p)); },
     "AA 00 00 06 06 55", "AA 00 01 06 1F 19 55", "1F"},
    {"requests", [](CHubAlarm* a, BYTE* p) { return a->Alm_get_rmt_req(reinterpret_cast<DEVICE_REQ*>(p)); },
     "AA 00 00 07 07 55", "AA 00 14 07 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 13 55",
     "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14"},
    {"reset GSM", [](CHubAlarm* a, BYTE*) { return a->Alm_reset_gsm(); }, "AA 00 00 10 10 55", "AA 00 00 10 10 55", ""},
    {"SMS", [](CHubAlarm* a, BYTE* p) { return a->Alm_send_sms(kNumber, kA, p); },
     "AA 00 04 11 31 00 41 00 61 55", "AA 00 01 11 07 16 55", "07"},
    {"reset PSTN", [](CHubAlarm* a, BYTE*) { return a->Alm_reset_pstn(); },
     "AA 00 00 20 20 55", "AA 00 00 20 20 55", ""},
    {"relay", [](CHubAlarm* a, BYTE*) { return a->Alm_ctrl_relay(1, 1); },
     "AA 00 02 32 01 01 32 55", "AA 00 00 32 32 55", ""},
    {"inputs", ReadInputs,
     "AA 00 00 33 33 55", "AA 00 04 33 78 56 34 F2 DB 55", "78 56 34 F2"},
};
// clang-format on

Bytes Frame(BYTE command, const Bytes& payload = {}) {
  Bytes frame = {0xAA, static_cast<BYTE>(payload.size() / 256), static_cast<BYTE>(payload.size() % 256), command};
  frame.resize(4 + payload.size());
  std::ranges::copy(payload, frame.begin() + 4);
  frame.push_back(std::accumulate(frame.begin() + 3, frame.end(), BYTE{0}, std::bit_xor<BYTE>()));
  frame.push_back(0x55);
  return frame;
}

class HubAlarmTest : public testing::Test {
 protected:
  HubAlarmTest() { alarm_->InitHandler(&port_); }
  ~HubAlarmTest() override {
    alarm_->InitHandler(nullptr);
    CHubAlarm::FreeInstance();
  }

  // A reply of `length` bytes comes in two reads, three bytes and the rest; what is missing from `reply` did not come.
  // After an incomplete or wrong head, which is then all of `reply`, nothing more is read.
  void Answer(const Bytes& reply, int length) {
    const auto head = reply.begin() + std::min<std::ptrdiff_t>(3, std::ssize(reply));
    port_.Reply(3, Bytes(reply.begin(), head));
    if (reply.size() >= 3 && length > 3) port_.Reply(length - 3, Bytes(head, reply.end()));
  }
  void Play(const Bytes& request, const Bytes& reply) {
    port_.Expect(request);
    Answer(reply, static_cast<int>(reply.size()));
  }
  // The same with the payloads alone.
  void Play(BYTE command, const Bytes& request, const Bytes& reply) {
    Play(Frame(command, request), Frame(command, reply));
  }

  // Runs an operation and expects success with its result stored, or failure with nothing stored.
  void ExpectRun(const Operation& operation, bool good) {
    Bytes place(24, kOld);
    EXPECT_EQ(operation.run(alarm_, place.data()), good ? 0 : 1) << operation.name;
    Bytes expected = good ? Hex(operation.result) : Bytes{};
    expected.resize(place.size(), kOld);
    EXPECT_EQ(ToHex(place), ToHex(expected)) << operation.name;
    EXPECT_TRUE(port_.Done()) << operation.name;
    port_.Forget();
  }

  // The operation consists of exchanges, here by their payloads, and ends at the first that fails: by silence, and by
  // another status where a reply carries one.
  struct Step {
    BYTE command;
    Bytes request;
    Bytes accepted;
  };
  void ExpectSteps(const std::vector<Step>& steps, const std::function<int()>& run) {
    const auto expect_run = [&](std::size_t whole, int result) {
      EXPECT_EQ(run(), result) << whole << " of " << steps.size();
      EXPECT_TRUE(port_.Done()) << whole << " of " << steps.size();
      port_.Forget();
    };
    const auto play = [&](std::size_t count) {
      for (const Step& step : std::span(steps).first(count)) Play(step.command, step.request, step.accepted);
    };
    for (std::size_t i = 0; i < steps.size(); ++i) {
      play(i);
      port_.Expect(Frame(steps[i].command, steps[i].request)).Reply(3, {});
      expect_run(i, 1);
      if (steps[i].accepted.empty()) continue;
      for (const Bytes& refusal : {Bytes{1}, Bytes{}}) {
        play(i);
        Play(steps[i].command, steps[i].request, refusal);
        expect_run(i, 1);
      }
    }
    play(steps.size());
    expect_run(steps.size(), 0);
  }

  ScriptedPort port_;
  CHubAlarm* alarm_ = CHubAlarm::GetInstance();
};

TEST_F(HubAlarmTest, EachOperationIsOneExchangeAndRefusesEveryDamageToItsReply) {
  for (const Operation& operation : kOperations) {
    const Bytes reply = Hex(operation.reply);
    const int length = static_cast<int>(reply.size());
    port_.calls.clear();
    Play(Hex(operation.request), reply);
    ExpectRun(operation, true);
    EXPECT_EQ(port_.calls, "pwrr") << operation.name;
    for (int cut = 0; cut < length; ++cut) {
      port_.Expect(Hex(operation.request));
      Answer(Bytes(reply.begin(), reply.begin() + cut), length);
      ExpectRun(operation, false);
    }
    for (int bit = 3 * 8; bit < length * 8; ++bit) {
      Bytes flipped = reply;
      BYTE& byte = flipped[static_cast<std::size_t>(bit / 8)];
      byte = static_cast<BYTE>(byte ^ 1 << bit % 8);
      Play(Hex(operation.request), flipped);
      ExpectRun(operation, false);
    }
  }
}

TEST_F(HubAlarmTest, JudgesAReplyAsEachCommandWants) {
  // clang-format off
  const std::tuple<const char*, const char*, bool> cases[] = {
      // The start mark counts for two commands only.
      {"device id",      "00 00 04 01 11 22 33 44 45 55",    true },
      {"status",         "55 00 04 02 01 02 03 04 06 55",    true },
      {"snapshot",       "AB 00 00",                         false},
      {"snapshot",       "AA 01 00",                         false},
      {"snapshot",       "AA 00 01",                         false},
      {"signal quality", "2A 00 01",                         false},
      {"signal quality", "AA 00 02",                         false},
      // A whole reply to another command.
      {"reset GSM",      "AA 00 00 20 20 55",                false},
      {"signal quality", "AA 00 01 11 1F 0E 55",             false},
      // More payload than is taken.
      {"device id",      "AA 00 05 01 11 22 33 44 55 10 55", true },
      {"status",         "AA 00 06 02 01 02 03 04 05 06",    false},
      {"status",         "AA 00 06 02 01 02 03 04 06 55",    true },
      {"status",         "AA FF FF 02 01 02 03 04 06 55",    true },
      // As much as the buffer holds, and more.
      {"reset PSTN",     "AA 00 1D 20 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                         "01 21 55",                         true },
      {"reset PSTN",     "AA 00 1E",                         false},
      {"device id",      "AA 01 04",                         false},
      // Less payload than is taken.
      {"device id",      "AA 00 03 01 11 22 33 01 55",       false},
      {"status",         "AA 00 03 02 01 02 03 02 55",       false},
  };
  // clang-format on
  for (const auto& [name, reply, good] : cases) {
    SCOPED_TRACE(reply);
    const Operation& operation = *std::ranges::find(kOperations, std::string_view(name), &Operation::name);
    Play(Hex(operation.request), Hex(reply));
    ExpectRun(operation, good);
  }
}

TEST_F(HubAlarmTest, MmsGoesInBlocksOf256) {
  for (const std::size_t size : {0u, 1u, 256u, 257u, 600u}) {
    SCOPED_TRACE(size);
    Bytes data(size);
    for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<BYTE>((i * 7 + i / 256) & 0xFF);
    std::vector<Step> steps = {
        {0x12, {}, {0}}
    };
    for (std::size_t offset = 0; offset < size; offset += 256) {
      const auto block = std::span(data).subspan(offset, std::min<std::size_t>(256, size - offset));
      steps.push_back({0x13, Bytes(block.begin(), block.end()), {}});
    }
    steps.push_back({0x14, {}, {0}});
    steps.push_back({
        0x15, {'H', 'i', 0},
         {0 }
    });
    ExpectSteps(steps, [&] {
      return alarm_->Alm_send_mms(kHi, size > 0 ? data.data() : nullptr, static_cast<unsigned long>(size));
    });
  }

  // Whatever length the answer to a block announces, checksum and end mark are expected right after the command.
  BYTE byte = 0x40;
  Play(0x12, {}, {0});
  port_.Expect(Frame(0x13, {byte})).Reply(3, Hex("AA 00 02")).Reply(3, Hex("13 13 55"));
  Play(0x14, {}, {0});
  Play(0x15, {'H', 'i', 0}, {0});
  EXPECT_EQ(alarm_->Alm_send_mms(kHi, &byte, 1), 0);
}

TEST_F(HubAlarmTest, DialAndSpeechSetTheTextFirst) {
  const Step set_text = {
      0x04, {'H', 'i', 0},
       { }
  };
  ExpectSteps(
      {
          set_text, {0x21, {'1', 0}, {}}
  },
      [&] { return alarm_->Alm_pstn_dial(kNumber, kHi); });
  ExpectSteps(
      {
          set_text, {0x31, {}, {}}
  },
      [&] { return alarm_->Alm_tts_local(kHi); });
}

TEST_F(HubAlarmTest, RefusesWhatCannotBeSentBeforeTouchingTheLine) {
  std::string fits(505, 'x');
  std::string too_long(506, 'x');
  std::string half(252, 'x');  // two of them and their zeros are 506 bytes
  std::string more_than_half(253, 'x');
  BYTE result = kOld;
  BYTE data = 0;
  for (char* const refused : {too_long.data(), static_cast<char*>(nullptr)}) {
    EXPECT_THAT(
        (std::vector{alarm_->Alm_set_tts_text(refused), alarm_->Alm_set_snapshot(refused),
                     alarm_->Alm_tts_local(refused), alarm_->Alm_pstn_dial(refused, kHi),
                     alarm_->Alm_pstn_dial(kNumber, refused), alarm_->Alm_send_mms(refused, &data, 1),
                     alarm_->Alm_send_sms(refused, kA, &result), alarm_->Alm_send_sms(kNumber, refused, &result)}),
        Each(1));
  }
  EXPECT_THAT(
      (std::vector{alarm_->Alm_send_sms(half.data(), more_than_half.data(), &result),
                   alarm_->Alm_send_sms(kNumber, kA, nullptr), alarm_->Alm_send_mms(kHi, nullptr, 1),
                   alarm_->Alm_get_device_id(nullptr), alarm_->Alm_get_status(nullptr),
                   alarm_->Alm_get_sig_qty(nullptr), alarm_->Alm_get_rmt_req(nullptr), alarm_->Alm_read_io(nullptr)}),
      Each(1));
  alm_send_frame(0x04, &data, 507);
  alm_send_frame(0x04, &data, -1);
  EXPECT_EQ(port_.calls, "");
  EXPECT_EQ(result, kOld);

  // The longest that goes: 506 bytes, 01 FA.
  Bytes text = Text(fits);
  text.push_back(0);
  Play(0x04, text, {});
  EXPECT_EQ(alarm_->Alm_set_tts_text(fits.data()), 0);
  Bytes halves = Text(half + '\0' + half + '\0');
  Play(0x11, halves, {0});
  EXPECT_EQ(alarm_->Alm_send_sms(half.data(), half.data(), &result), 0);
  EXPECT_EQ(result, 0);
}

TEST_F(HubAlarmTest, AFailedWriteReopensThePortOnce) {
  const Bytes frame = Hex("AA 00 00 10 10 55");
  const auto expect_run = [&](int result, const char* calls) {
    if (result == 0) Answer(frame, 6);
    port_.calls.clear();
    EXPECT_EQ(alarm_->Alm_reset_gsm(), result) << calls;
    EXPECT_EQ(port_.calls, calls);
    EXPECT_TRUE(port_.Done()) << calls;
  };

  port_.ExpectButReport(frame, -1).Expect(frame);
  expect_run(0, "pwcowrr");
  port_.ExpectButReport(frame, -1).ExpectButReport(frame, -1).Reply(3, {});
  expect_run(1, "pwcowr");
  // Part of a frame is not sent again; what answers all the same is believed.
  port_.ExpectButReport(frame, 5);
  expect_run(0, "pwrr");
  port_.open = 0;
  port_.Expect(frame);
  expect_run(0, "pwcowrr");
  port_.open = port_.can_open = 0;
  expect_run(1, "pwcowr");
}

TEST_F(HubAlarmTest, ReportsWhetherTheLinkIsOpen) {
  port_.open = 0;
  port_.calls.clear();
  EXPECT_FALSE(alarm_->IsReady());
  EXPECT_EQ(alarm_->Alm_ctrl_init(), 1);
  EXPECT_TRUE(alarm_->IsReady());
  alarm_->InitHandler(&port_);
  EXPECT_FALSE(alarm_->IsReady()) << "a port that is installed anew is closed";
  port_.can_open = 0;
  EXPECT_EQ(alarm_->Alm_ctrl_init(), 0);
  EXPECT_EQ(port_.calls, "oco");

  EXPECT_EQ(alarm_->Alm_test_com(), 0);
  EXPECT_EQ(alarm_->GetData(&port_, 1), 0);
  EXPECT_EQ(port_.calls, "oco");
}

TEST_F(HubAlarmTest, ThePortOutlivesTheObject) {
  CHubAlarm::FreeInstance();
  CHubAlarm::FreeInstance();
  EXPECT_EQ(port_.open, 1);

  alarm_ = CHubAlarm::GetInstance();
  EXPECT_FALSE(alarm_->IsReady());
  EXPECT_EQ(alarm_->Alm_ctrl_init(), 0);
  Play(0x10, {}, {});
  EXPECT_EQ(alarm_->Alm_reset_gsm(), 0) << "the link still has the port";

  ScriptedPort other;
  alarm_->InitHandler(&other);
  EXPECT_EQ(port_.open, 0);
  EXPECT_EQ(other.calls, "");
  EXPECT_TRUE(alarm_->IsReady());

  alarm_->InitHandler(nullptr);
  EXPECT_EQ(other.open, 0);
  other.calls.clear();
  EXPECT_FALSE(alarm_->IsReady());
  EXPECT_EQ(alarm_->Alm_ctrl_init(), 0);
  for (const Operation& operation : kOperations) ExpectRun(operation, false);
  EXPECT_EQ(alarm_->Alm_send_mms(kHi, nullptr, 0), 1);
  alm_send_frame(0x10, nullptr, 0);
  EXPECT_EQ(other.calls, "");
  const BYTE bytes[] = {0x32, 0x01, 0x03};
  EXPECT_EQ(alm_xor_sum(bytes, 3), 0x30);
  EXPECT_EQ(alm_xor_sum(bytes, -1), 0);
}

TEST_F(HubAlarmTest, AThreadThatHoldsTheLockKeepsOthersOut) {
  for (int i = 0; i < 50; ++i) Play(0x20, {}, {});
  Play(0x10, {}, {});

  IHubAlarm* const alarm = alarm_;
  alarm->Lock();
  alarm->Lock();
  std::latch started(1);
  std::thread other([&] {
    started.count_down();
    EXPECT_EQ(alarm->Alm_reset_gsm(), 0);
  });
  started.wait();
  for (int i = 0; i < 25; ++i) EXPECT_EQ(alarm->Alm_reset_pstn(), 0);
  alarm->Unlock();
  for (int i = 0; i < 25; ++i) EXPECT_EQ(alarm->Alm_reset_pstn(), 0);
  alarm->Unlock();
  other.join();
  EXPECT_TRUE(port_.Done());
}

}  // namespace
}  // namespace fieldline::test
