#include "fieldline/platform/file.h"

#include <unistd.h>

#include <cerrno>

#include "fieldline/platform/path_buffer.h"
#include "fieldline/platform/posix/open_file.h"

namespace fieldline {

bool File::Create(const char16_t* path) {
  Close();
  PathBuffer host_path;
  if (!FindFlashPath(path, host_path)) return false;
  // O_NONBLOCK: opening a pipe at this path must not wait for a reader.
  handle_ = OpenFile(host_path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
  return handle_ != kInvalidHandle;
}

int File::Write(const BYTE* data, int count) {
  if (handle_ == kInvalidHandle) return -1;
  int written = 0;
  while (written < count) {
    const ssize_t taken = write(static_cast<int>(handle_), data + written, static_cast<std::size_t>(count - written));
    if (taken > 0) {
      written += static_cast<int>(taken);
    } else if (taken == 0 || errno != EINTR) {
      const bool full = taken < 0 && (errno == ENOSPC || errno == EDQUOT);
      return full ? written : -1;
    }
  }
  return written;
}

void File::Close() {
  if (handle_ == kInvalidHandle) return;
  close(static_cast<int>(handle_));
  handle_ = kInvalidHandle;
}

}  // namespace fieldline
