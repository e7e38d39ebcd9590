#include "fieldline/platform/serial_device.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "fieldline/platform/win32/deadline.h"
#include "fieldline/platform/win32/device_path.h"

namespace fieldline {

namespace {

using OpenResult = SerialDevice::OpenResult;

// How long a call to the system lasts at most. In between the line is looked at, because a transfer does not notice
// that the adapter was pulled.
constexpr std::uint32_t kLongestWaitMs = 50;

struct OpenLine {
  HANDLE port;
  HANDLE claim;
};

HANDLE PortOf(std::intptr_t handle) { return reinterpret_cast<OpenLine*>(handle)->port; }

bool IsDirectory(const wchar_t* path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

OpenResult OpenFailure(DWORD error, const wchar_t* path) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_DEV_NOT_EXIST:
    case ERROR_DEVICE_NOT_CONNECTED:
    case ERROR_GEN_FAILURE:  // the driver is there, its adapter is not
      return OpenResult::kNoSuchDevice;
    case ERROR_SHARING_VIOLATION:
    case ERROR_ALREADY_EXISTS:
      return OpenResult::kInUse;
    case ERROR_ACCESS_DENIED:
      if (IsDirectory(path)) return OpenResult::kNotSerial;
      // Of a device it says that it is open elsewhere.
      return std::wstring_view(path).starts_with(L"\\\\.\\") ? OpenResult::kInUse : OpenResult::kNotPermitted;
    default:
      return OpenResult::kFailed;
  }
}

// Null when another opener has claimed the line, or when that can't be known; GetLastError() tells. Share mode 0 alone
// keeps others out on Windows, but not under Wine.
HANDLE Claim(const wchar_t* path) {
  constexpr wchar_t kPrefix[] = L"Global\\fieldline ";
  constexpr std::size_t kPrefixLength = sizeof kPrefix / sizeof *kPrefix - 1;
  WidePath name;
  std::copy_n(kPrefix, kPrefixLength, name);
  const std::size_t length = std::min(std::wcslen(path), sizeof name / sizeof *name - kPrefixLength - 1);
  wchar_t* const rest = name + kPrefixLength;
  std::copy_n(path, length, rest);
  rest[length] = L'\0';
  CharUpperW(rest);
  std::replace(rest, rest + length, L'\\', L'/');  // a backslash would name a folder of such objects
  const HANDLE claim = CreateMutexW(nullptr, FALSE, name);
  const DWORD error = GetLastError();
  if (claim == nullptr || error != ERROR_ALREADY_EXISTS) return claim;
  CloseHandle(claim);
  SetLastError(error);
  return nullptr;
}

bool GetSettings(HANDLE port, DCB& settings) {
  settings = {};
  settings.DCBlength = sizeof settings;
  return GetCommState(port, &settings) != 0;
}

// Every byte passes unchanged in both directions. Speed, character format and hardware flow control stay as they are.
bool MakeRaw(HANDLE port) {
  DCB settings;
  if (!GetSettings(port, settings)) return false;
  settings.fBinary = TRUE;
  settings.fDsrSensitivity = FALSE;  // would drop bytes
  settings.fOutX = FALSE;
  settings.fInX = FALSE;
  settings.fErrorChar = FALSE;
  settings.fNull = FALSE;
  settings.fAbortOnError = FALSE;
  return SetCommState(port, &settings) != 0;
}

// Bytes not sent yet; -1 when the line is gone.
int QueuedForSending(HANDLE port) {
  COMSTAT status{};
  DWORD errors = 0;
  return ClearCommError(port, &errors, &status) ? static_cast<int>(status.cbOutQue) : -1;
}

bool IsGone(HANDLE port) { return QueuedForSending(port) < 0; }

// Discards the bytes not sent yet and returns how many there were. Leaves an empty queue alone: on a line in software
// that would take back bytes already sent.
int DiscardQueued(HANDLE port) {
  const int queued = QueuedForSending(port);
  if (queued < 1) return 0;
  PurgeComm(port, PURGE_TXABORT | PURGE_TXCLEAR);
  return queued;
}

// From now on a read waits so long for a first byte and then returns all that are there, and a write waits so long.
bool SetWaits(HANDLE port, std::uint32_t ms) {
  COMMTIMEOUTS waits{};
  waits.ReadIntervalTimeout = MAXDWORD;
  if (ms > 0) {  // otherwise this combination means "what is there", which is right
    waits.ReadTotalTimeoutMultiplier = MAXDWORD;
    waits.ReadTotalTimeoutConstant = ms;
  }
  waits.WriteTotalTimeoutConstant = std::max<DWORD>(ms, 1);  // 0 would be for ever
  return SetCommTimeouts(port, &waits) != 0;
}

// Waits for a byte and returns how many came, up to `capacity`; 0 when the deadline passed first, -1 when the line is
// gone.
int Receive(HANDLE port, BYTE* data, int capacity, const Deadline& deadline) {
  for (;;) {
    const bool last = deadline.HasPassed();
    DWORD taken = 0;
    if (!SetWaits(port, deadline.RemainingMs(kLongestWaitMs))) return -1;
    if (!ReadFile(port, data, static_cast<DWORD>(capacity), &taken, nullptr)) return -1;
    if (taken > 0) return static_cast<int>(taken);
    if (IsGone(port)) return -1;
    if (last) return 0;
  }
}

// How long so many characters of ten bits take, in whole ms; at least 1.
std::uint32_t WireMs(HANDLE port, int characters) {
  DCB settings;
  if (!GetSettings(port, settings) || settings.BaudRate == 0) return 1;
  return static_cast<std::uint32_t>(std::max<std::int64_t>(std::int64_t{characters} * 10'000 / settings.BaudRate, 1));
}

BYTE StopBitsOf(const LineSettings& settings) {
  if (settings.stop_bits == StopBits::kOne) return ONESTOPBIT;
  const bool half = settings.stop_bits == StopBits::kOneAndHalf && settings.data_bits == 5;
  return half ? ONE5STOPBITS : TWOSTOPBITS;
}

bool IsNear(DWORD taken, std::uint32_t asked) {
  const std::int64_t difference = std::int64_t{taken} - std::int64_t{asked};
  return std::max(difference, -difference) * 50 <= asked;
}

std::int64_t TotalMs(int per_byte, int constant, int count) {
  return std::int64_t{std::max(per_byte, 0)} * count + std::max(constant, 0);
}

}  // namespace

SerialDevice::OpenResult SerialDevice::Open(const wchar_t* name) {
  WidePath path;
  if (!FindDeviceToOpen(name, path)) return OpenResult::kNoSuchDevice;

  const HANDLE claim = Claim(path);
  if (claim == nullptr) return OpenFailure(GetLastError(), path);
  const HANDLE port = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (port == INVALID_HANDLE_VALUE) {
    const OpenResult result = OpenFailure(GetLastError(), path);
    CloseHandle(claim);
    return result;
  }
  auto* const line = new (std::nothrow) OpenLine{port, claim};
  SetupComm(port, 2048, 2048);
  if (line == nullptr || !MakeRaw(port)) {
    CloseHandle(port);
    CloseHandle(claim);
    delete line;
    return line == nullptr ? OpenResult::kFailed : OpenResult::kNotSerial;
  }
  handle_ = reinterpret_cast<std::intptr_t>(line);
  return OpenResult::kOpened;
}

void SerialDevice::Close() {
  if (!IsOpen()) return;
  auto* const line = reinterpret_cast<OpenLine*>(handle_);
  DiscardQueued(line->port);  // otherwise a halted line may hold up CloseHandle()
  CloseHandle(line->port);
  CloseHandle(line->claim);
  delete line;
  handle_ = kInvalidHandle;
}

bool SerialDevice::SetTimeouts(const SerialTimeouts& timeouts) {
  if (!IsOpen()) return false;
  timeouts_ = timeouts;
  return true;
}

bool SerialDevice::SetLine(const LineSettings& settings) {
  if (!IsOpen() || settings.baud == 0 || settings.data_bits < 5 || settings.data_bits > 8) return false;
  const HANDLE port = PortOf(handle_);
  DCB former;
  if (!GetSettings(port, former)) return false;
  DCB wanted = former;
  wanted.BaudRate = settings.baud;
  wanted.ByteSize = static_cast<BYTE>(settings.data_bits);
  wanted.Parity = static_cast<BYTE>(settings.parity);  // in Windows' own numbers
  wanted.StopBits = StopBitsOf(settings);
  if (SetCommState(port, &wanted)) {
    DCB taken;
    if (!GetSettings(port, taken)) return false;
    if (IsNear(taken.BaudRate, settings.baud) && taken.ByteSize == wanted.ByteSize && taken.Parity == wanted.Parity &&
        taken.StopBits == wanted.StopBits) {
      return true;
    }
  }
  SetCommState(port, &former);
  return false;
}

bool SerialDevice::Purge() {
  if (!IsOpen()) return false;
  const HANDLE port = PortOf(handle_);
  const int queued = QueuedForSending(port);  // PurgeComm() does not notice that the line is gone
  if (queued < 0) return false;
  const DWORD sending = queued > 0 ? PURGE_TXABORT | PURGE_TXCLEAR : 0;
  return PurgeComm(port, PURGE_RXABORT | PURGE_RXCLEAR | sending) != 0;
}

int SerialDevice::Read(BYTE* data, int count) {
  if (!IsOpen() || count < 1) return 0;
  const Deadline deadline(TotalMs(timeouts_.read_per_byte, timeouts_.read_constant, count));
  int received = 0;
  while (received < count) {
    const int taken = Receive(PortOf(handle_), data + received, count - received, deadline);
    if (taken < 1) break;
    received += taken;
  }
  return received;
}

int SerialDevice::ReadSome(BYTE* data, int capacity, int wait_ms) {
  if (!IsOpen()) return -1;
  if (capacity < 1) return 0;
  return Receive(PortOf(handle_), data, capacity, Deadline(wait_ms));
}

int SerialDevice::Write(const BYTE* data, int count) {
  if (!IsOpen()) return -1;
  if (count < 1) return 0;
  const HANDLE port = PortOf(handle_);
  const Deadline deadline(TotalMs(timeouts_.write_per_byte, timeouts_.write_constant, count));
  // Never `count`: at least one byte that was handed over is still on its way.
  const auto give_up = [port, count](int handed_over) {
    return std::clamp(handed_over - DiscardQueued(port), 0, count - 1);
  };

  int handed_over = 0;
  while (handed_over < count) {
    const bool last = deadline.HasPassed();
    DWORD taken = 0;
    if (!SetWaits(port, deadline.RemainingMs(kLongestWaitMs))) return -1;
    if (!WriteFile(port, data + handed_over, static_cast<DWORD>(count - handed_over), &taken, nullptr)) return -1;
    handed_over += static_cast<int>(taken);
    if (taken > 0) continue;
    if (IsGone(port)) return -1;
    if (last) return give_up(handed_over);
  }

  // The caller's read time-out starts when this returns, so the bytes must be on the wire.
  for (;;) {
    const int queued = QueuedForSending(port);
    if (queued < 0) return -1;
    if (queued == 0) return count;
    if (deadline.HasPassed()) return give_up(handed_over);
    Sleep(deadline.RemainingMs(std::min(WireMs(port, queued), kLongestWaitMs)));
  }
}

}  // namespace fieldline
