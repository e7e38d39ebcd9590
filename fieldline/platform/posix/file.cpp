#include "fieldline/platform/file.h"

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "fieldline/platform/posix/open_file.h"
#include "fieldline/platform/text.h"

namespace fieldline {

namespace {

struct FlashRoot {
  std::mutex mutex;
  std::unique_ptr<char[]> directory;  // null means "/"
};

FlashRoot& Root() {
  static FlashRoot root;
  return root;
}

// <root>/<path with slashes>. False when it does not fit.
bool HostPath(const char16_t* path, char (&out)[PATH_MAX]) {
  std::size_t length;
  {
    FlashRoot& root = Root();
    const std::lock_guard lock(root.mutex);
    length = root.directory ? std::strlen(root.directory.get()) : 0;
    if (length + 2 > sizeof out) return false;
    std::copy_n(root.directory.get(), length, out);
  }
  out[length++] = '/';
  const int room = static_cast<int>(sizeof out - length);
  const int written = Utf16ToUtf8(path, out + length, room);
  constexpr int kLongestCharacter = 4;
  if (written + kLongestCharacter >= room) return false;  // may have been cut
  std::replace(out + length, out + length + written, '\\', '/');
  return true;
}

}  // namespace

int SetFlashRoot(const char* directory) {
  std::unique_ptr<char[]> chosen;
  if (directory != nullptr) {
    const std::size_t size = std::strlen(directory) + 1;
    chosen.reset(new (std::nothrow) char[size]);
    if (!chosen) return 0;
    std::copy_n(directory, size, chosen.get());
  }
  FlashRoot& root = Root();
  const std::lock_guard lock(root.mutex);
  root.directory.swap(chosen);
  return 1;
}

bool File::Create(const char16_t* path) {
  Close();
  char host_path[PATH_MAX];
  if (!HostPath(path, host_path)) return false;
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
