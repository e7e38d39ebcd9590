#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "fieldline/platform/file.h"
#include "fieldline/platform/path_buffer.h"
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

bool FindFlashPath(const char16_t* file, PathBuffer& path) {
  std::size_t length;
  {
    FlashRoot& root = Root();
    const std::lock_guard lock(root.mutex);
    length = root.directory ? std::strlen(root.directory.get()) : 0;
    if (length + 2 > sizeof path) return false;
    std::copy_n(root.directory.get(), length, path);
  }
  path[length++] = '/';
  const int room = static_cast<int>(sizeof path - length);
  const int written = Utf16ToUtf8(file, path + length, room);
  constexpr int kLongestCharacter = 4;
  if (written + kLongestCharacter >= room) return false;  // may have been cut
  std::replace(path + length, path + length + written, '\\', '/');
  return true;
}

}  // namespace fieldline
