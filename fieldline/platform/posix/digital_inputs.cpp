#include "fieldline/platform/digital_inputs.h"

#include <unistd.h>

#include "fieldline/platform/path_buffer.h"
#include "fieldline/platform/posix/open_file.h"
#include "fieldline/platform/posix/wait.h"

namespace fieldline {

bool ReadDigitalInputs(const wchar_t* device, BYTE* states) {
  constexpr int kLongestWaitMs = 100;

  PathBuffer path;
  if (!FindDevicePath(device, path)) return false;
  const int fd = OpenFile(path, O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  const Deadline deadline(kLongestWaitMs);
  ssize_t received;
  while ((received = read(fd, states, 1)) < 0 && (errno == EAGAIN || errno == EINTR)) {
    if (WaitFor(fd, POLLIN, deadline) == 0 || deadline.RemainingNs() == 0) break;
  }
  close(fd);
  return received == 1;
}

}  // namespace fieldline
