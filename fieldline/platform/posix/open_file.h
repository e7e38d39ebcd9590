#pragma once

#include <fcntl.h>

#include <cerrno>

namespace fieldline {

// Calls open() again whenever a signal interrupts it. `mode` is for a file that open() creates.
inline int OpenFile(const char* path, int flags, mode_t mode = 0) {
  int fd;
  do {
    fd = open(path, flags, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

}  // namespace fieldline
