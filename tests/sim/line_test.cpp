#include "sim/line.h"

#include <atomic>

#include "fieldline/platform/serial_device.h"
#include "tests/support/make_device.h"
#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using namespace std::chrono_literals;
using test::Hex;
using test::MakeDevice;
using test::Text;
using test::ToHex;

constexpr int kAnswerWait = 10000;  // ms, for what must come
constexpr int kSilenceWait = 100;   // ms, for what must not

class NearEnd {
 public:
  NearEnd(const Line& line, std::uint32_t baud) {
    const std::string path = line.Path() + ":";
    EXPECT_EQ(device_.Open(std::wstring(path.begin(), path.end()).c_str()), SerialDevice::OpenResult::kOpened);
    SetBaud(baud);
  }
  ~NearEnd() { device_.Close(); }

  void SetBaud(std::uint32_t baud) { EXPECT_TRUE(device_.SetLine({.baud = baud})); }

  void Send(const Bytes& bytes) {
    const int count = static_cast<int>(bytes.size());
    EXPECT_TRUE(device_.SetTimeouts({0, 0, 0, kAnswerWait}));
    EXPECT_EQ(device_.Write(bytes.data(), count), count);
  }
  // At most `count` bytes that come within `wait` ms.
  Bytes Receive(int count, int wait = kAnswerWait) {
    Bytes bytes(static_cast<std::size_t>(count));
    EXPECT_TRUE(device_.SetTimeouts({0, wait, 0, 0}));
    bytes.resize(static_cast<std::size_t>(device_.Read(bytes.data(), count)));
    return bytes;
  }
  std::string Ask(const char* request) {
    Send(Hex(request));
    return ToHex(Receive(9));
  }
  // Nothing may come until the line has counted the request in `counter`, nor right after.
  void ExpectNoAnswer(const char* request, const std::atomic<int>& counter) {
    const int before = counter;
    Send(Hex(request));
    for (int waited = 0; counter == before && waited < kAnswerWait; waited += kSilenceWait) {
      EXPECT_EQ(ToHex(Receive(1, kSilenceWait)), "");
    }
    EXPECT_NE(counter, before);
    EXPECT_EQ(ToHex(Receive(1, kSilenceWait)), "");
  }

 private:
  SerialDevice device_;
};

Line::Listener Count(std::atomic<int>& count, Traffic what) {
  return [&count, what](Traffic traffic, std::span<const BYTE>) { count += traffic == what; };
}

// Answers each "?" at once with two replies of many bytes.
class Talker : public Device {
 public:
  static constexpr int kReplySize = 20000;
  std::size_t Receive(std::span<const BYTE> received, bool, std::vector<Reply>& replies) override {
    if (received[0] != '?') return 0;
    for (const BYTE fill : Text("ab")) replies.push_back({Bytes(kReplySize, fill), 5ms});
    return 1;
  }
};

const char kAskTen[] = "0A 03 00 00 00 02 C5 70";
const char kFromTen[] = "0A 03 04 01 C2 00 EB A0 BC";

TEST(Line, CarriesSeveralDevicesEachAtItsAddress) {
  std::atomic<int> unclaimed = 0;
  Line line;
  Device& one = line.Add(MakeDevice("envir", 1));
  line.Add(MakeDevice("envir", 10));
  line.SetListener(Count(unclaimed, Traffic::kUnclaimed));
  ASSERT_TRUE(line.Start());
  NearEnd near(line, 9600);
  EXPECT_EQ(near.Ask(kAskTen), kFromTen);
  near.ExpectNoAnswer("02 03 00 00 00 02 C4 38", unclaimed);
  near.ExpectNoAnswer("01 03 00 00", unclaimed);  // cut off; forgotten before the next request
  one.values().PutNumber("humidity", 29.1);
  one.values().PutNumber("temperature", -29.2);
  EXPECT_EQ(near.Ask("01 03 00 00 00 02 C4 0B"), "01 03 04 01 23 FE DC 4B FC");
}

TEST(Line, IsSilentAtAnotherSpeedAndKeepsToItsOwn) {
  std::atomic<int> garbled = 0;
  Line line({.baud = 300});
  line.Add(MakeDevice("envir", 10));
  line.SetListener(Count(garbled, Traffic::kGarbled));
  ASSERT_TRUE(line.Start());
  NearEnd near(line, 9600);
  near.ExpectNoAnswer(kAskTen, garbled);
  near.SetBaud(300);
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_EQ(near.Ask(kAskTen), kFromTen);
  EXPECT_GE(std::chrono::steady_clock::now() - asked, 500ms);  // 17 bytes of 33 ms
}

TEST(Line, DeliversRepliesThatExceedEveryBuffer) {
  Line line({.paced = false});
  line.Add(std::make_unique<Talker>());
  ASSERT_TRUE(line.Start());
  NearEnd near(line, 9600);
  near.Send(Text("??"));
  for (const BYTE fill : Text("abab")) {
    EXPECT_EQ(near.Receive(Talker::kReplySize), Bytes(Talker::kReplySize, fill));
  }
}

TEST(Line, StopsInTheMiddleOfAReplyAndStartsAnew) {
  Line line({.baud = 300});
  line.Add(std::make_unique<Talker>());
  for (int life = 0; life < 2; ++life) {
    ASSERT_TRUE(line.Start());
    NearEnd near(line, 300);
    near.Send(Text("?"));
    EXPECT_EQ(near.Receive(1), Text("a"));
    const auto stopped = std::chrono::steady_clock::now();
    line.Stop();
    near.Receive(Talker::kReplySize);  // ends with the line
    EXPECT_LT(std::chrono::steady_clock::now() - stopped, 5s);
    EXPECT_EQ(line.Path(), "");
  }
}

}  // namespace
}  // namespace fieldline::sim
