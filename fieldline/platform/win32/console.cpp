#include "fieldline/platform/console.h"

#include <atomic>
#include <cstdlib>

#include "fieldline/platform/win32/deadline.h"
#include "fieldline/platform/win32/system.h"

namespace fieldline {

namespace {

std::atomic<int> interrupts = 0;

// Stays signalled from the first interrupt on, so that it wakes any sleeping thread.
HANDLE InterruptEvent() {
  static const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  return event;
}

HANDLE HandleOf(Stream stream) {
  switch (stream) {
    case Stream::kInput:
      return GetStdHandle(STD_INPUT_HANDLE);
    case Stream::kOutput:
      return GetStdHandle(STD_OUTPUT_HANDLE);
    default:
      return GetStdHandle(STD_ERROR_HANDLE);
  }
}

// Ctrl-C, Ctrl-Break, a window that is closed, and the end of the session. Runs in a thread of its own.
BOOL WINAPI OnInterrupt(DWORD) {
  if (++interrupts > 2) return FALSE;  // what comes next ends the program
  Interrupt();
  return TRUE;
}

UINT former_code_page = 0;

void OccupyClosed(DWORD which, DWORD access) {
  const HANDLE handle = GetStdHandle(which);
  if (handle != nullptr && handle != INVALID_HANDLE_VALUE) return;
  SetStdHandle(which,
               CreateFileW(L"NUL", access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
}

}  // namespace

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

// The writing end of a pipe can't be asked; the next write tells.
bool IsUnread(Stream) { return false; }

TerminalSize SizeOfTerminal(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (!GetConsoleScreenBufferInfo(HandleOf(stream), &info)) return {80, 24};
  return {info.srWindow.Right - info.srWindow.Left + 1, info.srWindow.Bottom - info.srWindow.Top + 1};
}

void PrepareStreams() {
  // Each is opened the way round that its use fails.
  OccupyClosed(STD_INPUT_HANDLE, GENERIC_WRITE);
  OccupyClosed(STD_OUTPUT_HANDLE, GENERIC_READ);
  OccupyClosed(STD_ERROR_HANDLE, GENERIC_READ);
  for (const Stream stream : {Stream::kOutput, Stream::kError}) {
    DWORD mode = 0;
    if (!GetConsoleMode(HandleOf(stream), &mode)) continue;
    SetConsoleMode(HandleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    if (former_code_page != 0) continue;
    // The console is the shell's, too, and keeps what is set.
    former_code_page = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(former_code_page); });
  }
}

void CatchInterrupts() {
  static const bool once = (InterruptEvent(), SetConsoleCtrlHandler(OnInterrupt, TRUE)) != 0;
  static_cast<void>(once);
}

bool Interrupted() { return WaitForSingleObject(InterruptEvent(), 0) == WAIT_OBJECT_0; }

int InterruptCount() { return interrupts; }

void Interrupt() { SetEvent(InterruptEvent()); }

bool SleepUnlessInterrupted(int ms) {
  constexpr std::uint32_t kDay = 24 * 3600 * 1000;
  for (const Deadline end(ms); !end.HasPassed();) {
    if (WaitForSingleObject(InterruptEvent(), end.RemainingMs(kDay)) == WAIT_OBJECT_0) return false;
  }
  return !Interrupted();
}

// Nobody can ask for it: Windows has no hang-up.
const char* const kReopenSignal = nullptr;
void CatchReopenRequests() {}
bool TakeReopenRequest() { return false; }

}  // namespace fieldline
