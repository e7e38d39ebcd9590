#pragma once

#include <fcntl.h>

#include <cerrno>

namespace fieldline {

// open(), again after every signal that interrupts it. `mode` is that of a file that is created.
inline int OpenFile(const char* path, int flags, mode_t mode = 0) {
  int fd;
  do {
    fd = open(path, flags, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

}  // namespace fieldline
