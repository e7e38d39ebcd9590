#include "fieldline/platform/directory_lock.h"

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "fieldline/platform/posix/open_file.h"

namespace fieldline {

DirectoryLock::~DirectoryLock() {
  if (handle_ != kInvalidHandle) close(static_cast<int>(handle_));
}

std::error_code DirectoryLock::Take(const std::string& directory) {
  handle_ = OpenFile(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle_ != kInvalidHandle && flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) == 0) return {};
  return {errno, std::generic_category()};
}

}  // namespace fieldline
