#pragma once

#include <cstdint>
#include <string>
#include <system_error>

namespace fieldline {

// Keeps other programs that ask for it out of a directory. It leaves nothing there, and ends with the process at the
// latest, however that ends. Used by the command; not part of the library.
class DirectoryLock {
 public:
  DirectoryLock() = default;
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  // Does not wait: std::errc::operation_would_block while another has the directory. Call it once.
  std::error_code Take(const std::string& directory);

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t handle_ = kInvalidHandle;
};

}  // namespace fieldline
