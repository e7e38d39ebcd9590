#include "fieldline/platform/serial_device.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <thread>

#include "tests/platform/serial_line_fixture.h"
#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using OpenResult = SerialDevice::OpenResult;

using SerialDeviceTest = SerialLineFixture;

// Beyond what the queues of any line hold.
Bytes MoreThanQueuesHold() {
  Bytes bytes(100'000);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<BYTE>(i % 251);
  return bytes;
}

TEST_F(SerialDeviceTest, BytesSentBeforeTheLineIsOpenedAreNotEchoed) {
  EXPECT_EQ(2, WriteFar({'\r', 'a'}));
  OpenNear();
  EXPECT_EQ((Bytes{'\r', 'a'}), ReadNear(2));
  EXPECT_EQ(1, WriteNear({'b'}));
  EXPECT_EQ((Bytes{'b'}), ReadFar(1));
}

TEST_F(SerialDeviceTest, OneOpenerAtATime) {
  OpenNear();
  ASSERT_TRUE(near_.SetLine({.baud = 2400}));
  SerialDevice second;
  EXPECT_EQ(OpenResult::kInUse, second.Open(name_.c_str()));
  EXPECT_FALSE(second.IsOpen());
  EXPECT_EQ(2400u, far_.Baud());
  EXPECT_EQ(1, WriteNear({'a'}));
  EXPECT_EQ((Bytes{'a'}), ReadFar(1));

  near_.Close();
  EXPECT_FALSE(near_.IsOpen());
  EXPECT_EQ(OpenResult::kOpened, second.Open(name_.c_str()));
  second.Close();
}

TEST_F(SerialDeviceTest, OpenTellsWhatIsWrong) {
  const TempDirectory directory;
  directory.WriteFile("file", "not a line");
  const std::wstring below = directory.Path().wstring();
  const std::pair<std::wstring, OpenResult> kCases[] = {
      {below + L"/nothing:", OpenResult::kNoSuchDevice},
      {below + L"/file/x:",  OpenResult::kNoSuchDevice},
      {below + L"/file:",    OpenResult::kNotSerial   },
      {below + L":",         OpenResult::kNotSerial   },
      {L"NO SUCH NAME:",     OpenResult::kNoSuchDevice},
      {L"ESL1",              OpenResult::kNoSuchDevice}
  };
  for (const auto& [name, result] : kCases) {
    EXPECT_EQ(result, near_.Open(name.c_str())) << testing::PrintToString(name);
    EXPECT_FALSE(near_.IsOpen());
  }
  EXPECT_EQ(OpenResult::kNoSuchDevice, near_.Open(nullptr));
  EXPECT_EQ("not a line", directory.ReadFile("file"));
}

TEST_F(SerialDeviceTest, AClosedLineRefusesEverything) {
  BYTE byte = 0;
  EXPECT_FALSE(near_.SetTimeouts({1, 1, 1, 1}));
  EXPECT_FALSE(near_.SetLine({}));
  EXPECT_FALSE(near_.Purge());
  EXPECT_EQ(0, near_.Read(&byte, 1));
  EXPECT_EQ(-1, near_.Write(&byte, 1));
  EXPECT_EQ(-1, near_.Write(&byte, 0));
  near_.Close();

  OpenNear();
  EXPECT_EQ(0, near_.Read(&byte, 0));
  EXPECT_EQ(0, near_.Read(&byte, -1));
  EXPECT_EQ(0, near_.Write(&byte, 0));
  EXPECT_EQ(0, near_.Write(&byte, -1));
}

TEST_F(SerialDeviceTest, TheSpeedIsTheOneAskedFor) {
  OpenNear();
  for (const std::uint32_t baud : {50u, 2400u, 3'000'000u, 115'200u}) {
    EXPECT_TRUE(near_.SetLine({.baud = baud}));
    EXPECT_EQ(baud, far_.Baud());
  }
  EXPECT_FALSE(near_.SetLine({.baud = 0}));
  for (const std::uint32_t bits : {0u, 4u, 9u}) EXPECT_FALSE(near_.SetLine({.baud = 9600, .data_bits = bits})) << bits;
  EXPECT_EQ(115'200u, far_.Baud());
  EXPECT_EQ(1, WriteNear({'a'}));
  EXPECT_EQ((Bytes{'a'}), ReadFar(1));
}

TEST_F(SerialDeviceTest, AnyOddSpeedIsTakenToo) {
  OpenNear();
  for (const std::uint32_t baud : {12'345u, 250'000u}) {
    EXPECT_TRUE(near_.SetLine({.baud = baud}));
    EXPECT_EQ(baud, far_.Baud());
  }
}

// More bytes than the line holds can't all be there at once: the read must wait for several arrivals.
TEST_F(SerialDeviceTest, AReadGathersWhatDribblesInHoweverLongItMayTake) {
  OpenNear();
  const Bytes sent = MoreThanQueuesHold();
  for (const SerialTimeouts& timeouts : {
           SerialTimeouts{INT_MAX, 0,       0, 0},
           SerialTimeouts{1,       INT_MAX, 0, 0}
  }) {
    ASSERT_TRUE(near_.SetTimeouts(timeouts));
    std::atomic<bool> read_ended = false;
    std::thread sender([&] {
      for (std::size_t i = 0; i < sent.size() && !read_ended;) {
        i += static_cast<std::size_t>(far_.Write(sent.data() + i, static_cast<int>(sent.size() - i)));
      }
    });
    const Bytes received = ReadNear(static_cast<int>(sent.size()));
    read_ended = true;
    sender.join();
    EXPECT_EQ(sent.size(), received.size());
    EXPECT_TRUE(sent == received);
  }
}

TEST_F(SerialDeviceTest, AReadLastsAsLongAsItsTimeoutsSay) {
  OpenNear({2, 20, 0, 0});
  auto start = steady_clock::now();
  EXPECT_EQ(Bytes{}, ReadNear(20));
  EXPECT_GE(steady_clock::now() - start, milliseconds(60));

  EXPECT_EQ(3, WriteFar({'a', 'b', 'c'}));
  EXPECT_EQ((Bytes{'a', 'b', 'c'}), ReadNear(20));

  EXPECT_EQ(3, WriteFar({'d', 'e', 'f'}));
  ASSERT_TRUE(near_.SetTimeouts({0, kPatienceMs, 0, 0}));
  start = steady_clock::now();
  EXPECT_EQ((Bytes{'d'}), ReadNear(1));
  for (const int none : {0, -1000}) {
    ASSERT_TRUE(near_.SetTimeouts({none, none, none, none}));
    EXPECT_EQ(none == 0 ? (Bytes{'e', 'f'}) : Bytes{}, ReadNear(20));
  }
  EXPECT_LT(steady_clock::now() - start, milliseconds(kPatienceMs / 2));
}

TEST_F(SerialDeviceTest, AHangUpEndsATransferAtOnceAndFailsWhatFollows) {
  const auto expect_end = [&](const auto& transfer) {
    SetUp();
    OpenNear();
    const auto start = steady_clock::now();
    std::thread puller([&] { far_.Close(); });
    transfer();
    puller.join();
    EXPECT_EQ(Bytes{}, ReadNear(10));
    EXPECT_EQ(-1, WriteNear({'a', 'b'}));
    EXPECT_FALSE(near_.Purge());
    EXPECT_FALSE(near_.SetLine({}));
    EXPECT_LT(steady_clock::now() - start, milliseconds(kPatienceMs / 2));
    EXPECT_TRUE(near_.IsOpen());
    near_.Close();
  };
  far_.Close();
  expect_end([&] { EXPECT_EQ(Bytes{}, ReadNear(10)); });
  expect_end([&] { EXPECT_EQ(-1, WriteNear(MoreThanQueuesHold())); });
}

TEST_F(SerialDeviceTest, PurgeDiscardsWhatWasReceivedAndNotRead) {
  OpenNear();
  EXPECT_EQ(3, WriteFar({'a', 'b', 'c'}));
  EXPECT_EQ((Bytes{'a'}), ReadNear(1));
  EXPECT_TRUE(near_.Purge());
  EXPECT_EQ(1, WriteFar({'d'}));
  EXPECT_EQ((Bytes{'d'}), ReadNear(1));
}

TEST_F(SerialDeviceTest, AWriteThatRunsOutOfTimeSaysHowMuchHasLeft) {
  OpenNear({0, 0, 0, 50});
  const Bytes sent = MoreThanQueuesHold();
  const int left = WriteNear(sent);
  ASSERT_GE(left, 0);
  ASSERT_LT(left, static_cast<int>(sent.size()));
  EXPECT_EQ(Bytes(sent.begin(), sent.begin() + left), ReadFar(static_cast<std::size_t>(left)));

  // What did not fit never follows, and neither a purge nor closing takes back what has left.
  EXPECT_EQ(3, WriteNear({0xFD, 0xFE, 0xFF}));
  EXPECT_TRUE(near_.Purge());
  near_.Close();
  EXPECT_EQ((Bytes{0xFD, 0xFE, 0xFF}), ReadFar(3));
}

}  // namespace
}  // namespace fieldline
