#include "fieldline/platform/console.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>

#include "fieldline/platform/posix/open_file.h"
#include "fieldline/platform/posix/wait.h"

namespace fieldline {

namespace {

std::atomic<bool> interrupted = false;
std::atomic<int> interrupts = 0;
std::atomic<bool> reopen_requested = false;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "set from a signal handler");

// Becomes readable at the first interrupt and wakes any sleeping thread, also when the interrupt comes between the
// check of the flag and the wait.
int interrupt_event = -1;

extern "C" void OnInterrupt(int number) {
  const int error = errno;
  if (++interrupts > 2) {
    signal(number, SIG_DFL);
    raise(number);
  }
  Interrupt();
  errno = error;
}

extern "C" void OnReopenRequest(int) { reopen_requested = true; }

void Catch(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

bool IsIgnored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
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

// A terminal that hung up says POLLHUP with it.
bool IsUnread(Stream stream) { return WaitFor(FileDescriptor(stream), 0, Deadline(0)) == POLLERR; }

TerminalSize SizeOfTerminal(Stream stream) {
  winsize size{};
  if (ioctl(FileDescriptor(stream), TIOCGWINSZ, &size) != 0) size = {};
  return {size.ws_col != 0 ? size.ws_col : 80, size.ws_row != 0 ? size.ws_row : 24};
}

void PrepareStreams() {
  signal(SIGPIPE, SIG_IGN);
  // The lowest free descriptor is the one that a new file gets. Each is opened the way round that its use fails.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    OpenFile("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void CatchInterrupts() {
  if (interrupt_event >= 0) return;
  interrupt_event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  for (const int number : {SIGINT, SIGHUP}) {
    if (!IsIgnored(number)) Catch(number, OnInterrupt);
  }
  Catch(SIGTERM, OnInterrupt);
}

bool Interrupted() { return interrupted; }

int InterruptCount() { return interrupts; }

void Interrupt() {
  interrupted = true;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(interrupt_event, &one, sizeof one);
}

const char* const kReopenSignal = "SIGHUP";

void CatchReopenRequests() { Catch(SIGHUP, OnReopenRequest); }

bool TakeReopenRequest() { return reopen_requested.exchange(false); }

bool SleepUnlessInterrupted(int ms) {
  WaitFor(interrupt_event, POLLIN, Deadline(ms));
  return !Interrupted();
}

}  // namespace fieldline
