#include "fieldline/platform/console.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>

#include "fieldline/platform/posix/wait.h"

namespace fieldline {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

// Becomes readable at the first interrupt and wakes any sleeping thread, also when the interrupt comes between the
// check of the flag and the wait.
int interrupt_event = -1;

extern "C" void OnInterrupt(int) {
  const int error = errno;
  signal(SIGINT, SIG_DFL);
  signal(SIGTERM, SIG_DFL);
  interrupted = true;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(interrupt_event, &one, sizeof one);
  errno = error;
}

int FileDescriptor(Stream stream) {
  switch (stream) {
    case Stream::kInput:
      return STDIN_FILENO;
    case Stream::kOutput:
      return STDOUT_FILENO;
    default:
      return STDERR_FILENO;
  }
}

}  // namespace

bool IsTerminal(Stream stream) { return isatty(FileDescriptor(stream)) == 1; }

TerminalSize SizeOfTerminal(Stream stream) {
  constexpr TerminalSize kUsualSize = {80, 24};
  winsize size{};
  if (ioctl(FileDescriptor(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return kUsualSize;
  return {size.ws_col, size.ws_row};
}

void CatchInterrupts() {
  if (interrupt_event < 0) interrupt_event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool Interrupted() { return interrupted; }

bool SleepUnlessInterrupted(int ms) {
  WaitFor(interrupt_event, POLLIN, Deadline(ms));
  return !Interrupted();
}

}  // namespace fieldline
