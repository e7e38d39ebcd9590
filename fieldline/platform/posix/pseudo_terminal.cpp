#include "fieldline/platform/pseudo_terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "fieldline/platform/posix/terminal.h"
#include "fieldline/platform/posix/wait.h"

namespace fieldline {

bool PseudoTerminal::IsSupported() { return true; }

bool PseudoTerminal::Open() {
  Close();
  far_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (!IsOpen()) return false;
  const int far = static_cast<int>(far_);
  if (grantpt(far) == 0 && unlockpt(far) == 0 && ptsname_r(far, path_, sizeof path_) == 0) {
    near_ = open(path_, O_RDWR | O_NOCTTY | O_CLOEXEC);
  }
  // Raw from the start: otherwise bytes that arrive before the near end is first opened would be echoed.
  if (near_ == kInvalidHandle || !MakeRaw(static_cast<int>(near_))) {
    Close();
    return false;
  }
  return true;
}

void PseudoTerminal::Close() {
  if (near_ != kInvalidHandle) close(static_cast<int>(near_));
  if (far_ != kInvalidHandle) close(static_cast<int>(far_));
  near_ = kInvalidHandle;
  far_ = kInvalidHandle;
  path_[0] = '\0';
}

int PseudoTerminal::Read(BYTE* data, int capacity, int wait_ms) {
  if (!IsOpen()) return -1;
  if (capacity < 1) return 0;
  const int far = static_cast<int>(far_);
  if (WaitFor(far, POLLIN, Deadline(wait_ms)) == 0) {
    // A killed program leaves the near end claimed, and because `near_` is open the kernel never releases that claim.
    ioctl(static_cast<int>(near_), TIOCNXCL);
    return 0;
  }
  const ssize_t received = read(far, data, static_cast<std::size_t>(capacity));
  if (received < 0) return errno == EAGAIN || errno == EINTR ? 0 : -1;
  return static_cast<int>(received);
}

int PseudoTerminal::Write(const BYTE* data, int count) {
  if (!IsOpen()) return -1;
  if (count < 1) return 0;
  ssize_t taken;
  do {
    taken = write(static_cast<int>(far_), data, static_cast<std::size_t>(count));
  } while (taken < 0 && errno == EINTR);
  if (taken < 0) return errno == EAGAIN ? 0 : -1;
  return static_cast<int>(taken);
}

std::uint32_t PseudoTerminal::Baud() const {
  termios2 settings;
  if (!IsOpen() || !GetSettings(static_cast<int>(near_), settings)) return 0;
  return settings.c_ospeed;
}

}  // namespace fieldline
