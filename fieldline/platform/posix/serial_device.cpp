#include "fieldline/platform/serial_device.h"

#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "fieldline/platform/path_buffer.h"
#include "fieldline/platform/posix/open_file.h"
#include "fieldline/platform/posix/terminal.h"
#include "fieldline/platform/posix/wait.h"

namespace fieldline {

namespace {

using OpenResult = SerialDevice::OpenResult;

OpenResult OpenFailure(int error) {
  switch (error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
    case ENOTDIR:
      return OpenResult::kNoSuchDevice;
    case EBUSY:
    case EWOULDBLOCK:
      return OpenResult::kInUse;
    case EACCES:
    case EPERM:
      return OpenResult::kNotPermitted;
    case ENOTTY:
    case EISDIR:
      return OpenResult::kNotSerial;
    default:
      return OpenResult::kFailed;
  }
}

// Takes two locks, because TIOCEXCL alone lets privileged openers in.
bool Claim(int fd) { return flock(fd, LOCK_EX | LOCK_NB) == 0 && ioctl(fd, TIOCEXCL) == 0; }

// -1 when the line is gone.
int QueuedForSending(int fd) {
  int queued = 0;
  return ioctl(fd, TIOCOUTQ, &queued) == 0 ? queued : -1;
}

// Discards the bytes not sent yet and returns how many there were. Does not flush an empty queue: on a pseudo-terminal
// that would take back bytes already sent.
int DiscardQueued(int fd) {
  const int queued = QueuedForSending(fd);
  if (queued < 1) return 0;
  ioctl(fd, TCFLSH, TCOFLUSH);
  return queued;
}

// How long so many characters of ten bits take, in whole ms; at least 1.
std::int64_t WireMs(int fd, int characters) {
  termios2 settings;
  if (!GetSettings(fd, settings) || settings.c_ospeed == 0) return 1;
  return std::max<std::int64_t>(std::int64_t{characters} * 10'000 / settings.c_ospeed, 1);
}

tcflag_t DataBitFlags(std::uint32_t data_bits) {
  switch (data_bits) {
    case 5:
      return CS5;
    case 6:
      return CS6;
    case 7:
      return CS7;
    default:
      return CS8;
  }
}

tcflag_t ParityFlags(Parity parity) {
  switch (parity) {
    case Parity::kOdd:
      return PARENB | PARODD;
    case Parity::kEven:
      return PARENB;
    case Parity::kMark:
      return PARENB | CMSPAR | PARODD;
    case Parity::kSpace:
      return PARENB | CMSPAR;
    default:
      return 0;
  }
}

// The code of a standard speed, which other programs can read. BOTHER for any other speed, which is then given as a
// number.
tcflag_t SpeedFlags(std::uint32_t baud) {
  static constexpr struct {
    std::uint32_t baud;
    tcflag_t flags;
  } kStandard[] = {
      {50,        B50     },
      {75,        B75     },
      {110,       B110    },
      {134,       B134    },
      {150,       B150    },
      {200,       B200    },
      {300,       B300    },
      {600,       B600    },
      {1200,      B1200   },
      {1800,      B1800   },
      {2400,      B2400   },
      {4800,      B4800   },
      {9600,      B9600   },
      {19'200,    B19200  },
      {38'400,    B38400  },
      {57'600,    B57600  },
      {115'200,   B115200 },
      {230'400,   B230400 },
      {460'800,   B460800 },
      {500'000,   B500000 },
      {576'000,   B576000 },
      {921'600,   B921600 },
      {1'000'000, B1000000},
      {1'152'000, B1152000},
      {1'500'000, B1500000},
      {2'000'000, B2000000},
      {2'500'000, B2500000},
      {3'000'000, B3000000},
      {3'500'000, B3500000},
      {4'000'000, B4000000},
  };
  for (const auto& standard : kStandard) {
    if (standard.baud == baud) return standard.flags;
  }
  return BOTHER;
}

bool IsNear(speed_t taken, std::uint32_t asked) {
  const std::int64_t difference = std::int64_t{taken} - std::int64_t{asked};
  return std::max(difference, -difference) * 50 <= asked;
}

std::int64_t TotalMs(int per_byte, int constant, int count) {
  return std::int64_t{std::max(per_byte, 0)} * count + std::max(constant, 0);
}

}  // namespace

SerialDevice::OpenResult SerialDevice::Open(const wchar_t* name) {
  PathBuffer path;
  if (!FindDevicePath(name, path)) return OpenResult::kNoSuchDevice;

  const int fd = OpenFile(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return OpenFailure(errno);

  if (!Claim(fd)) {
    const int error = errno;
    close(fd);  // change no setting: another program uses the line
    return OpenFailure(error);
  }
  handle_ = fd;
  reports_transmitter_ = true;
  if (!MakeRaw(fd)) {
    const int error = errno;
    Close();
    return OpenFailure(error);
  }
  return OpenResult::kOpened;
}

void SerialDevice::Close() {
  if (!IsOpen()) return;
  const int fd = static_cast<int>(handle_);
  DiscardQueued(fd);  // otherwise the kernel may wait half a minute for a halted line to take them
  ioctl(fd, TIOCNXCL);
  close(fd);
  handle_ = kInvalidHandle;
}

bool SerialDevice::SetTimeouts(const SerialTimeouts& timeouts) {
  if (!IsOpen()) return false;
  timeouts_ = timeouts;
  return true;
}

bool SerialDevice::SetLine(const LineSettings& settings) {
  if (!IsOpen() || settings.baud == 0 || settings.data_bits < 5 || settings.data_bits > 8) return false;
  const int fd = static_cast<int>(handle_);
  termios2 found;
  if (!GetSettings(fd, found)) return false;

  termios2 wanted = found;
  constexpr tcflag_t kSpeedFlags = CBAUD | (CBAUD << IBSHIFT);
  constexpr tcflag_t kFormatFlags = CSIZE | PARENB | PARODD | CMSPAR | CSTOPB;
  wanted.c_cflag &= ~(kSpeedFlags | kFormatFlags);
  const tcflag_t speed = SpeedFlags(settings.baud);
  wanted.c_cflag |= speed | (speed << IBSHIFT);
  wanted.c_ispeed = settings.baud;
  wanted.c_ospeed = settings.baud;
  wanted.c_cflag |= DataBitFlags(settings.data_bits) | ParityFlags(settings.parity);
  if (settings.stop_bits != StopBits::kOne) wanted.c_cflag |= CSTOPB;
  if (ioctl(fd, TCSETS2, &wanted) != 0) return false;

  // Without an error, a driver takes the nearest speed it supports, and drops mark and space parity if it supports
  // neither.
  termios2 taken;
  if (GetSettings(fd, taken) && IsNear(taken.c_ospeed, settings.baud) && IsNear(taken.c_ispeed, settings.baud) &&
      (taken.c_cflag & CMSPAR) == (wanted.c_cflag & CMSPAR)) {
    return true;
  }
  ioctl(fd, TCSETS2, &found);
  return false;
}

bool SerialDevice::Purge() {
  if (!IsOpen()) return false;
  const int fd = static_cast<int>(handle_);
  DiscardQueued(fd);
  return ioctl(fd, TCFLSH, TCIFLUSH) == 0;
}

// The queue is empty before all bytes are on the wire: a UART holds up to 64 more, which take a while at 2400 bit/s.
// Most UART drivers report when these are sent. The others are asked once; for them an empty queue must be enough.
bool SerialDevice::IsTransmitterEmpty() {
  if (!reports_transmitter_) return true;
  unsigned int line_status = 0;
  reports_transmitter_ = ioctl(static_cast<int>(handle_), TIOCSERGETLSR, &line_status) == 0;
  return !reports_transmitter_ || (line_status & TIOCSER_TEMT) != 0;
}

int SerialDevice::Read(BYTE* data, int count) {
  if (!IsOpen() || count < 1) return 0;
  const int fd = static_cast<int>(handle_);
  const Deadline deadline(TotalMs(timeouts_.read_per_byte, timeouts_.read_constant, count));
  int received = 0;
  while (received < count) {
    // After the deadline this still reports the bytes received until now.
    const short events = WaitFor(fd, POLLIN, deadline);
    if (events == 0) break;
    const ssize_t taken = read(fd, data + received, static_cast<std::size_t>(count - received));
    if (taken > 0) {
      received += static_cast<int>(taken);
      continue;
    }
    const bool nothing_yet = taken < 0 && (errno == EAGAIN || errno == EINTR);
    if (!nothing_yet || IsGone(events) || deadline.RemainingNs() == 0) break;
  }
  return received;
}

int SerialDevice::ReadSome(BYTE* data, int capacity, int wait_ms) {
  if (!IsOpen()) return -1;
  if (capacity < 1) return 0;
  const int fd = static_cast<int>(handle_);
  const Deadline deadline(wait_ms);
  for (;;) {
    const short events = WaitFor(fd, POLLIN, deadline);
    if (events == 0) return 0;
    const ssize_t taken = read(fd, data, static_cast<std::size_t>(capacity));
    if (taken > 0) return static_cast<int>(taken);
    if (taken == 0 || (errno != EAGAIN && errno != EINTR) || IsGone(events)) return -1;
    if (deadline.RemainingNs() == 0) return 0;
  }
}

int SerialDevice::Write(const BYTE* data, int count) {
  if (!IsOpen()) return -1;
  if (count < 1) return 0;
  const int fd = static_cast<int>(handle_);
  const Deadline deadline(TotalMs(timeouts_.write_per_byte, timeouts_.write_constant, count));
  // Never `count`: at least one byte that was handed over is still in the transmitter.
  const auto give_up = [fd, count](int handed_over) {
    return std::clamp(handed_over - DiscardQueued(fd), 0, count - 1);
  };

  int handed_over = 0;
  while (handed_over < count) {
    const ssize_t taken = write(fd, data + handed_over, static_cast<std::size_t>(count - handed_over));
    if (taken > 0) {
      handed_over += static_cast<int>(taken);
      continue;
    }
    if (taken < 0 && errno != EAGAIN && errno != EINTR) return -1;
    const short events = WaitFor(fd, POLLOUT, deadline);
    if (IsGone(events)) return -1;
    if (events == 0 || deadline.RemainingNs() == 0) return give_up(handed_over);
  }

  // The caller's read time-out starts when this returns, so the bytes must be on the wire. tcdrain() would wait forever
  // on a halted line, and no poll event reports an empty queue. So this looks again when the bytes should have left.
  constexpr int kUsualFifo = 16;
  int in_transmitter = kUsualFifo;
  for (;;) {
    const int queued = QueuedForSending(fd);
    if (queued < 0) return -1;
    if (queued == 0 && IsTransmitterEmpty()) return count;
    const std::int64_t remaining_ns = deadline.RemainingNs();
    if (remaining_ns == 0) return give_up(handed_over);
    const std::int64_t pause_ms = WireMs(fd, std::min(queued + in_transmitter, count));
    if (IsGone(WaitFor(fd, 0, Deadline(std::min(pause_ms, remaining_ns / 1'000'000 + 1))))) return -1;
    in_transmitter = 0;  // from now on every millisecond
  }
}

}  // namespace fieldline
