#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/platform/serial_line_fixture.h"

namespace fieldline {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using OpenResult = SerialDevice::OpenResult;

class SerialDevicePosixTest : public SerialLineFixture {
 protected:
  // A second pair of eyes on the near end, which must be opened before the line is claimed.
  int OpenSpare() const { return open(far_.Path(), O_RDWR | O_NOCTTY | O_CLOEXEC); }

  // Waits until the near end has received `count` bytes that nobody has read.
  static bool AwaitUnread(int spare, int count) {
    const auto end = steady_clock::now() + milliseconds(kPatienceMs);
    while (steady_clock::now() < end) {
      int unread = -1;
      if (ioctl(spare, FIONREAD, &unread) == 0 && unread == count) return true;
      std::this_thread::yield();
    }
    return false;
  }

  // Runs `action` in a child without privileges and returns its result, 0 to 255; -1 when the child broke down.
  template <typename Action>
  int InUnprivilegedChild(Action action) {
    constexpr uid_t kNobody = 65534;
    const pid_t child = fork();
    if (child == 0) {
      if (geteuid() == 0 && setuid(kNobody) != 0) _exit(255);
      _exit(static_cast<int>(action()));
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
  }

  int OpenInChild() {
    return InUnprivilegedChild([this] { return SerialDevice().Open(name_.c_str()); });
  }
};

TEST_F(SerialDevicePosixTest, WhateverTheLastUserLeftEveryByteValuePasses) {
  const int spare = OpenSpare();
  termios cooked;
  ASSERT_EQ(0, tcgetattr(spare, &cooked));
  cooked.c_iflag = BRKINT | PARMRK | INPCK | ISTRIP | INLCR | ICRNL | IXON | IXOFF | IXANY;
  cooked.c_oflag = OPOST | ONLCR | OCRNL;
  cooked.c_lflag = ICANON | ECHO | ECHOE | ECHOK | ECHONL | ISIG | IEXTEN;
  cooked.c_cc[VMIN] = 0;
  cooked.c_cc[VTIME] = 1;
  ASSERT_EQ(0, tcsetattr(spare, TCSANOW, &cooked));
  close(spare);

  OpenNear();
  EXPECT_EQ(256, WriteNear(EveryByteValue()));
  EXPECT_EQ(EveryByteValue(), ReadFar(256));
  EXPECT_EQ(256, WriteFar(EveryByteValue()));
  EXPECT_EQ(EveryByteValue(), ReadNear(256));
}

TEST_F(SerialDevicePosixTest, OtherProgramsSeeAStandardSpeed) {
  const int spare = OpenSpare();
  OpenNear();
  ASSERT_TRUE(near_.SetLine({.baud = 2400}));
  termios seen;
  ASSERT_EQ(0, tcgetattr(spare, &seen));
  EXPECT_EQ(static_cast<speed_t>(B2400), cfgetospeed(&seen));
  close(spare);
}

TEST_F(SerialDevicePosixTest, AnotherProcessIsKeptOut) {
  ASSERT_EQ(0, chmod(far_.Path(), 0666));
  OpenNear();
  EXPECT_EQ(static_cast<int>(OpenResult::kInUse), OpenInChild());
  const auto plain_open = [this] { return OpenSpare() < 0 ? errno : 0; };
  EXPECT_EQ(EBUSY, InUnprivilegedChild(plain_open));

  near_.Close();
  EXPECT_EQ(0, InUnprivilegedChild(plain_open));
  // That user went without a word. The line must be free all the same.
  EXPECT_EQ(static_cast<int>(OpenResult::kOpened), OpenInChild());
  BYTE byte;
  EXPECT_EQ(0, far_.Read(&byte, 1, 0));
  EXPECT_EQ(static_cast<int>(OpenResult::kOpened), OpenInChild());

  ASSERT_EQ(0, chmod(far_.Path(), 0));
  EXPECT_EQ(static_cast<int>(OpenResult::kNotPermitted), OpenInChild());
}

TEST_F(SerialDevicePosixTest, TheLineIsNeitherInheritedNorAControllingTerminal) {
  OpenNear();
  int ends = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry.path(), gone) != far_.Path()) continue;
    ++ends;
    EXPECT_NE(0, fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
  }
  EXPECT_EQ(2, ends);  // the device's own, and the one by which the far end keeps the line alive

  near_.Close();
  ASSERT_EQ(0, chmod(far_.Path(), 0666));
  const auto open_in_new_session = [this] {
    if (setsid() < 0 || near_.Open(name_.c_str()) != OpenResult::kOpened) return 0;
    return open("/dev/tty", O_RDWR) < 0 ? errno : 0;
  };
  EXPECT_EQ(ENXIO, InUnprivilegedChild(open_in_new_session));
}

TEST_F(SerialDevicePosixTest, SignalsDoNotShortenAWait) {
  static volatile sig_atomic_t alarms;
  alarms = 0;
  struct sigaction action {};
  struct sigaction former;
  action.sa_handler = [](int) { alarms = alarms + 1; };
  ASSERT_EQ(0, sigaction(SIGALRM, &action, &former));
  const itimerval every_ms = {
      {0, 1000},
      {0, 1000}
  };
  const itimerval never{};
  setitimer(ITIMER_REAL, &every_ms, nullptr);

  OpenNear({0, 100, 0, 100});
  auto start = steady_clock::now();
  EXPECT_EQ(Bytes{}, ReadNear(1));
  EXPECT_GE(steady_clock::now() - start, milliseconds(100));
  start = steady_clock::now();
  EXPECT_LT(WriteNear(Bytes(100'000)), 100'000);
  EXPECT_GE(steady_clock::now() - start, milliseconds(100));

  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &former, nullptr);
  EXPECT_GT(alarms, 0);
}

TEST_F(SerialDevicePosixTest, AHangUpLeavesTheBytesThatCameBefore) {
  const int spare = OpenSpare();
  OpenNear();
  ASSERT_EQ(3, WriteFar({'a', 'b', 'c'}));
  ASSERT_TRUE(AwaitUnread(spare, 3));

  Bytes received;
  std::thread reader([&] { received = ReadNear(10); });
  EXPECT_TRUE(AwaitUnread(spare, 0)) << "the reader takes them and waits for more";
  far_.Close();
  reader.join();
  EXPECT_EQ((Bytes{'a', 'b', 'c'}), received);
  close(spare);
}

}  // namespace
}  // namespace fieldline
