#include "fieldline/platform/directory_lock.h"

#include <filesystem>

#include "fieldline/platform/win32/system.h"

namespace fieldline {

DirectoryLock::~DirectoryLock() {
  if (handle_ != kInvalidHandle) CloseHandle(AsHandle(handle_));
}

std::error_code DirectoryLock::Take(const std::string& directory) {
  WidePath wide;
  if (!ToWidePath(directory.c_str(), wide)) return std::make_error_code(std::errc::filename_too_long);
  // Who deletes or renames it asks to share what is not shared here, and so does a second Take().
  handle_ = AsNumber(CreateFileW(wide, DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (handle_ != kInvalidHandle) return {};
  const DWORD error = GetLastError();
  if (error == ERROR_SHARING_VIOLATION) return std::make_error_code(std::errc::operation_would_block);
  return {static_cast<int>(error), std::system_category()};
}

}  // namespace fieldline
