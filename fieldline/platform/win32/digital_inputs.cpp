#include "fieldline/platform/digital_inputs.h"

#include "fieldline/platform/win32/device_path.h"

namespace fieldline {

bool ReadDigitalInputs(const wchar_t* device, BYTE* states) {
  constexpr DWORD kLongestWaitMs = 100;

  WidePath path;
  if (!FindDeviceToOpen(device, path)) return false;
  const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_OVERLAPPED, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  OVERLAPPED reading{};
  reading.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  BYTE byte = 0;
  DWORD received = 0;
  if (ReadFile(file, &byte, 1, nullptr, &reading) || GetLastError() == ERROR_IO_PENDING) {
    if (WaitForSingleObject(reading.hEvent, kLongestWaitMs) != WAIT_OBJECT_0) CancelIo(file);
    // Waits for the end of what was cancelled, since it writes to this function's variables until then.
    if (!GetOverlappedResult(file, &reading, &received, TRUE)) received = 0;
  }
  CloseHandle(reading.hEvent);
  CloseHandle(file);
  if (received != 1) return false;
  *states = byte;
  return true;
}

}  // namespace fieldline
