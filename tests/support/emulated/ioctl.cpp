// qemu's user emulation knows the settings of a line only as TCGETS and TCSETS, which have no numeric speed and lose
// the bit for mark and space parity. This takes the place of ioctl() in emulated programs: it passes TCGETS2 and
// TCSETS2 on as these, and remembers by line what they can't carry.

#include <asm/termbits.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <map>
#include <mutex>

namespace {

constexpr tcflag_t kSpeed = CBAUD | CBAUD << IBSHIFT;
constexpr tcflag_t kMarkParity = CMSPAR;
constexpr tcflag_t kKept = kSpeed | kMarkParity;

struct Kept {
  tcflag_t flags;  // those in kKept
  speed_t in;
  speed_t out;
};

std::mutex mutex;
std::map<dev_t, Kept> kept_by_line;

// The line's device, whichever descriptor it is opened by.
dev_t LineOf(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 ? status.st_rdev : 0;
}

int Call(int fd, unsigned long request, void* argument) {
  return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

template <typename From, typename To>
void CopySettings(const From& from, To& to) {
  to.c_iflag = from.c_iflag;
  to.c_oflag = from.c_oflag;
  to.c_cflag = from.c_cflag;
  to.c_lflag = from.c_lflag;
  to.c_line = from.c_line;
  std::copy_n(from.c_cc, NCCS, to.c_cc);
}

int GetSettings(int fd, termios2& settings) {
  termios plain{};
  if (Call(fd, TCGETS, &plain) != 0) return -1;
  CopySettings(plain, settings);
  const std::lock_guard lock(mutex);
  const auto kept = kept_by_line.try_emplace(LineOf(fd), Kept{B38400, 38400, 38400}).first->second;
  settings.c_cflag = (settings.c_cflag & ~kKept) | kept.flags;
  settings.c_ispeed = kept.in;
  settings.c_ospeed = kept.out;
  return 0;
}

int SetSettings(int fd, const termios2& settings) {
  termios plain{};
  CopySettings(settings, plain);
  if ((plain.c_cflag & CBAUD) == BOTHER) plain.c_cflag = (plain.c_cflag & ~kSpeed) | B38400;
  plain.c_cflag &= ~kMarkParity;
  if (Call(fd, TCSETS, &plain) != 0) return -1;
  const std::lock_guard lock(mutex);
  kept_by_line[LineOf(fd)] = {settings.c_cflag & kKept, settings.c_ispeed, settings.c_ospeed};
  return 0;
}

}  // namespace

extern "C" int ioctl(int fd, unsigned long request, ...) {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == TCGETS2) return GetSettings(fd, *static_cast<termios2*>(argument));
  if (request == TCSETS2) return SetSettings(fd, *static_cast<const termios2*>(argument));
  return Call(fd, request, argument);
}
