// What is handed to the kernel: a pseudo-terminal keeps neither parity nor character size, has no transmitter, and
// takes every speed. Then what the kernel may hand back. The program is linked with --wrap for each call below, by the
// names in tests/CMakeLists.txt.

#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <functional>

#include "fieldline/platform/digital_inputs.h"
#include "fieldline/platform/file.h"
#include "tests/platform/serial_line_fixture.h"

namespace {

// Takes the kernel's place while set.
std::function<int(int fd, unsigned long request, void* argument)> kernel;
std::function<ssize_t()> transfer;  // of read and write
int interrupted_opens = 0;

int Fail(int error) {
  errno = error;
  return -1;
}

}  // namespace

extern "C" {
int RealIoctl(int fd, unsigned long request, void* argument) __asm__("__real_" FIELDLINE_IOCTL);
int RealOpen(const char* path, int flags, mode_t mode) __asm__("__real_" FIELDLINE_OPEN);
ssize_t RealRead(int fd, void* data, std::size_t count) __asm__("__real_read");
ssize_t RealWrite(int fd, const void* data, std::size_t count) __asm__("__real_write");
int WrappedIoctl(int fd, unsigned long request, ...) __asm__("__wrap_" FIELDLINE_IOCTL);
int WrappedOpen(const char* path, int flags, ...) __asm__("__wrap_" FIELDLINE_OPEN);
ssize_t WrappedRead(int fd, void* data, std::size_t count) __asm__("__wrap_read");
ssize_t WrappedWrite(int fd, const void* data, std::size_t count) __asm__("__wrap_write");

int WrappedIoctl(int fd, unsigned long request, ...) {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return kernel ? kernel(fd, request, argument) : RealIoctl(fd, request, argument);
}
int WrappedOpen(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = static_cast<mode_t>(va_arg(arguments, int));
  va_end(arguments);
  return interrupted_opens > 0 ? --interrupted_opens, Fail(EINTR) : RealOpen(path, flags, mode);
}
ssize_t WrappedRead(int fd, void* data, std::size_t count) { return transfer ? transfer() : RealRead(fd, data, count); }
ssize_t WrappedWrite(int fd, const void* data, std::size_t count) {
  return transfer ? transfer() : RealWrite(fd, data, count);
}
}

namespace fieldline {
namespace {

class KernelCallsTest : public SerialLineFixture {
 protected:
  void TearDown() override {
    kernel = nullptr;
    transfer = nullptr;
    SerialLineFixture::TearDown();
  }

  // Lets the settings through and reports `change` of them afterwards, as a driver does that can't do all.
  void AlterSettingsTaken(std::function<void(termios2*)> change) {
    kernel = [change = std::move(change), set = false](int fd, unsigned long request, void* argument) mutable {
      const int result = RealIoctl(fd, request, argument);
      if (request == TCSETS2) set = true;
      if (request == TCGETS2 && set) change(static_cast<termios2*>(argument));
      return result;
    };
  }

  std::vector<termios2> handed_over_;
};

TEST_F(KernelCallsTest, FourSettingsAreChangedAndNoOther) {
  OpenNear();
  const struct {
    LineSettings settings;
    tcflag_t speed;
    tcflag_t format;
  } kCases[] = {
      {{2400, 8, Parity::kNone, StopBits::kOne},          B2400,  CS8                                    },
      {{9600, 7, Parity::kOdd, StopBits::kTwo},           B9600,  CS7 | PARENB | PARODD | CSTOPB         },
      {{19'200, 6, Parity::kEven, StopBits::kOneAndHalf}, B19200, CS6 | PARENB | CSTOPB                  },
      {{12'345, 5, Parity::kMark, StopBits::kOneAndHalf}, BOTHER, CS5 | PARENB | PARODD | CMSPAR | CSTOPB},
      {{250'000, 8, Parity::kSpace, StopBits::kOne},      BOTHER, CS8 | PARENB | CMSPAR                  },
  };
  for (const auto& c : kCases) {
    handed_over_.clear();
    termios2 found{};
    kernel = [&](int fd, unsigned long request, void* argument) {
      if (request == TCSETS2) handed_over_.push_back(*static_cast<termios2*>(argument));
      const int result = RealIoctl(fd, request, argument);
      if (request == TCGETS2 && handed_over_.empty()) {
        auto* const settings = static_cast<termios2*>(argument);
        settings->c_cflag |= CRTSCTS | HUPCL;
        settings->c_iflag |= IUTF8;
        settings->c_cc[VSTOP] = 0x55;
        found = *settings;
      }
      return result;
    };
    EXPECT_TRUE(near_.SetLine(c.settings));
    ASSERT_EQ(1u, handed_over_.size());
    const termios2& set = handed_over_.front();
    constexpr tcflag_t kFormat = CSIZE | PARENB | PARODD | CMSPAR | CSTOPB;
    constexpr tcflag_t kSpeed = CBAUD | (CBAUD << IBSHIFT);
    EXPECT_EQ(c.format, set.c_cflag & kFormat) << c.settings.baud;
    EXPECT_EQ(c.settings.baud, set.c_ospeed);
    EXPECT_EQ(c.settings.baud, set.c_ispeed);
    EXPECT_EQ(c.speed | (c.speed << IBSHIFT), set.c_cflag & kSpeed);
    EXPECT_EQ(found.c_cflag & ~(kFormat | kSpeed), set.c_cflag & ~(kFormat | kSpeed));
    EXPECT_EQ(found.c_iflag, set.c_iflag);
    EXPECT_EQ(found.c_oflag, set.c_oflag);
    EXPECT_EQ(found.c_lflag, set.c_lflag);
    EXPECT_TRUE(std::equal(found.c_cc, found.c_cc + NCCS, set.c_cc));
  }
}

TEST_F(KernelCallsTest, HardwareThatCannotDoItIsNotTakenForHardwareThatCan) {
  OpenNear();
  ASSERT_TRUE(near_.SetLine({.baud = 2400}));
  kernel = [](int fd, unsigned long request, void* argument) {
    return request == TCSETS2 ? Fail(EINVAL) : RealIoctl(fd, request, argument);
  };
  EXPECT_FALSE(near_.SetLine({.baud = 9600}));
  const std::function<void(termios2*)> changes[] = {
      [](termios2* taken) { taken->c_ospeed = taken->c_ispeed = 9600 + 193; },  // 2 % of 9600 is 192
      [](termios2* taken) { taken->c_ospeed = 9600 - 193; },
      [](termios2* taken) { taken->c_ispeed = 9600 - 193; },
      [](termios2* taken) { taken->c_cflag &= ~static_cast<tcflag_t>(CMSPAR); },
  };
  for (const auto& change : changes) {
    AlterSettingsTaken(change);
    EXPECT_FALSE(near_.SetLine({.baud = 9600, .parity = Parity::kMark})) << &change - changes;
  }
  kernel = nullptr;
  EXPECT_EQ(2400u, far_.Baud()) << "a refusal leaves the settings that were there";
  EXPECT_TRUE(near_.IsOpen());

  AlterSettingsTaken([](termios2* taken) { taken->c_ospeed = taken->c_ispeed = 9600 - 192; });
  EXPECT_TRUE(near_.SetLine({.baud = 9600}));
}

TEST_F(KernelCallsTest, TheLineIsClaimedBeforeItsSettingsAreTouched) {
  std::vector<unsigned long> requests;
  kernel = [&](int fd, unsigned long request, void* argument) {
    requests.push_back(request);
    return RealIoctl(fd, request, argument);
  };
  OpenNear();
  ASSERT_FALSE(requests.empty());
  EXPECT_EQ(static_cast<unsigned long>(TIOCEXCL), requests.front());

  requests.clear();
  EXPECT_EQ(SerialDevice::OpenResult::kInUse, SerialDevice().Open(name_.c_str()));
  EXPECT_TRUE(requests.empty()) << "not even the claim of the first is given up";
}

TEST_F(KernelCallsTest, AWriteReturnsWhenTheTransmitterIsEmpty) {
  OpenNear();
  int queued = 3;
  int bytes_in_transmitter = 3;
  kernel = [&](int fd, unsigned long request, void* argument) {
    if (request == TIOCOUTQ) return *static_cast<int*>(argument) = queued > 0 ? --queued : 0, 0;
    if (request == TIOCSERGETLSR) {
      *static_cast<unsigned int*>(argument) = --bytes_in_transmitter == 0 ? TIOCSER_TEMT : 0;
      return 0;
    }
    return RealIoctl(fd, request, argument);
  };
  EXPECT_EQ(4, WriteNear({1, 2, 3, 4}));
  EXPECT_EQ(0, queued);
  EXPECT_EQ(0, bytes_in_transmitter);
}

TEST_F(KernelCallsTest, ADriverThatCannotTellOfItsTransmitterIsAskedOnceAnOpening) {
  OpenNear();
  int asked = 0;
  kernel = [&](int fd, unsigned long request, void* argument) {
    if (request == TIOCSERGETLSR) return ++asked, Fail(ENOTTY);
    return RealIoctl(fd, request, argument);
  };
  for (int i = 0; i < 3; ++i) EXPECT_EQ(1, WriteNear({1}));
  EXPECT_EQ(1, asked);
  near_.Close();
  OpenNear();
  EXPECT_EQ(1, WriteNear({1}));
  EXPECT_EQ(2, asked) << "another adapter may be there now";
}

TEST_F(KernelCallsTest, ASlowTransmitterIsLookedAtWhenItShouldBeEmptyAndNotAllTheTime) {
  OpenNear();
  ASSERT_TRUE(near_.SetLine({.baud = 2400}));
  const auto sent = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);  // twelve characters
  int looks = 0;
  kernel = [&](int fd, unsigned long request, void* argument) {
    if (request != TIOCSERGETLSR) return RealIoctl(fd, request, argument);
    ++looks;
    const bool empty = std::chrono::steady_clock::now() >= sent;
    *static_cast<unsigned int*>(argument) = empty ? TIOCSER_TEMT : 0;
    return 0;
  };
  EXPECT_EQ(12, WriteNear(Bytes(12)));
  EXPECT_GE(std::chrono::steady_clock::now(), sent);
  EXPECT_LE(looks, 5);
}

TEST_F(KernelCallsTest, AWriteOnAHaltedLineDiscardsTheRest) {
  OpenNear({0, 0, 1, 10});
  bool flushed = false;
  kernel = [&](int fd, unsigned long request, void* argument) {
    if (request == TIOCOUTQ) return *static_cast<int*>(argument) = flushed ? 0 : 3, 0;
    if (request == TCFLSH && argument == reinterpret_cast<void*>(TCOFLUSH)) flushed = true;
    return RealIoctl(fd, request, argument);
  };
  EXPECT_EQ(1, WriteNear({1, 2, 3, 4}));
  EXPECT_TRUE(flushed);

  kernel = [](int fd, unsigned long request, void* argument) {
    if (request == TIOCSERGETLSR) return *static_cast<unsigned int*>(argument) = 0, 0;
    return RealIoctl(fd, request, argument);
  };
  EXPECT_EQ(3, WriteNear({1, 2, 3, 4})) << "the last byte never left the transmitter";

  kernel = [](int fd, unsigned long request, void* argument) {
    return request == TIOCOUTQ ? Fail(EIO) : RealIoctl(fd, request, argument);
  };
  EXPECT_EQ(-1, WriteNear({1, 2, 3, 4})) << "the adapter was pulled after it took the bytes";
}

TEST_F(KernelCallsTest, ALineThatIsReadyAndMovesNothingHoldsNobodyPastTheTimeout) {
  OpenNear({0, 30, 0, 30});
  WriteFar({1});
  for (const int error : {EAGAIN, EINTR}) {
    transfer = [error] { return Fail(error); };
    EXPECT_EQ(Bytes{}, ReadNear(1));
    EXPECT_EQ(0, WriteNear({1}));
  }
  transfer = [] { return 0; };
  EXPECT_EQ(0, WriteNear({1}));

  File file;
  ASSERT_TRUE(file.Create(u"\\dev\\null"));
  const BYTE byte = 1;
  EXPECT_EQ(-1, file.Write(&byte, 1));
  file.Close();
}

TEST_F(KernelCallsTest, AnInterruptedOpenIsRepeated) {
  interrupted_opens = 1;
  OpenNear();
  interrupted_opens = 1;
  File file;
  EXPECT_TRUE(file.Create(u"\\dev\\null"));
  file.Close();
  interrupted_opens = 1;
  BYTE states = 1;
  EXPECT_TRUE(ReadDigitalInputs(L"/dev/zero:", &states));
  EXPECT_EQ(0, states);
}

}  // namespace
}  // namespace fieldline
