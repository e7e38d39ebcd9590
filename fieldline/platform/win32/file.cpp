#include "fieldline/platform/file.h"

#include "fieldline/platform/path_buffer.h"
#include "fieldline/platform/win32/system.h"

namespace fieldline {

bool File::Create(const char16_t* path) {
  Close();
  PathBuffer host_path;
  WidePath wide;
  if (!FindFlashPath(path, host_path) || !ToWidePath(host_path, wide)) return false;
  const HANDLE file =
      CreateFileW(wide, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  if (GetFileType(file) != FILE_TYPE_DISK) {  // a name such as COM1, which is a device in every directory
    CloseHandle(file);
    return false;
  }
  handle_ = AsNumber(file);
  return true;
}

int File::Write(const BYTE* data, int count) {
  if (handle_ == kInvalidHandle) return -1;
  int written = 0;
  while (written < count) {
    DWORD taken = 0;
    if (!WriteFile(AsHandle(handle_), data + written, static_cast<DWORD>(count - written), &taken, nullptr)) {
      const DWORD error = GetLastError();
      const bool full = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL;
      return full ? written : -1;
    }
    if (taken == 0) return -1;
    written += static_cast<int>(taken);
  }
  return written;
}

void File::Close() {
  if (handle_ == kInvalidHandle) return;
  CloseHandle(AsHandle(handle_));
  handle_ = kInvalidHandle;
}

}  // namespace fieldline
