#pragma once

// The kernel's terminal interface instead of <termios.h>, which supports only a fixed list of speeds. The two can't be
// included together.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace fieldline {

// Sets raw mode: every byte passes unchanged in both directions. Speed, character format and hardware flow control stay
// as they are.
inline bool MakeRaw(int fd) {
  termios2 settings;
  if (ioctl(fd, TCGETS2, &settings) != 0) return false;
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
