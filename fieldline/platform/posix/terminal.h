#pragma once

// The kernel's own terminal interface in place of <termios.h>, which knows a fixed list of speeds. The two can't be
// included together.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace fieldline {

// Lets every byte through unchanged, both ways. Speed, character format and hardware flow control stay.
inline bool MakeRaw(int fd) {
  termios2 settings;
  if (ioctl(fd, TCGETS2, &settings) != 0) return false;
  // Every input flag changes, adds or swallows bytes, save this one: without it a break reads as a zero byte.
  settings.c_iflag = IGNBRK;
  settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | ISIG | IEXTEN);
  settings.c_cflag |= CLOCAL | CREAD;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  return ioctl(fd, TCSETS2, &settings) == 0;
}

}  // namespace fieldline
