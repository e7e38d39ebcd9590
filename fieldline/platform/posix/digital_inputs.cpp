#include "fieldline/platform/digital_inputs.h"

#include <fcntl.h>
#include <unistd.h>

#include "fieldline/platform/posix/device_path.h"
#include "fieldline/platform/posix/wait.h"

namespace fieldline {

bool ReadDigitalInputs(const wchar_t* device, BYTE* states) {
  constexpr int kLongestWaitMs = 100;

  PathBuffer path;
  if (!FindDevicePath(device, path)) return false;
  const int fd = open(path, O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  ssize_t received = read(fd, states, 1);
  if (received < 0 && (errno == EAGAIN || errno == EINTR)) {
    if (WaitFor(fd, POLLIN, Deadline(kLongestWaitMs)) != 0) received = read(fd, states, 1);
  }
  close(fd);
  return received == 1;
}

}  // namespace fieldline
