#pragma once

// The kernel's terminal interface instead of <termios.h>, which supports only a fixed list of speeds. The two can't be
// included together.
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace fieldline {

// glibc's ioctl() takes the request as an unsigned long, musl's as an int, which TCGETS2 does not fit.
template <typename Request>
bool GetSettings(int (*control)(int, Request, ...), int fd, termios2& settings) {
  return control(fd, static_cast<Request>(TCGETS2), &settings) == 0;
}
inline bool GetSettings(int fd, termios2& settings) { return GetSettings(ioctl, fd, settings); }

// Sets raw mode: every byte passes unchanged in both directions. Speed, character format and hardware flow control stay
// as they are.
inline bool MakeRaw(int fd) {
  termios2 settings;
  if (!GetSettings(fd, settings)) return false;
  // All other input flags change, add or drop bytes. Without IGNBRK, a break is read as a zero byte.
  settings.c_iflag = IGNBRK;
  settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | ISIG | IEXTEN);
  settings.c_cflag |= CLOCAL | CREAD;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  return ioctl(fd, TCSETS2, &settings) == 0;
}

}  // namespace fieldline
