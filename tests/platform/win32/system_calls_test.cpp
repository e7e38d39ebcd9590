// What the backend hands over to Windows, and hardware that a line in software can't play.

#include <climits>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fieldline/platform/device_path.h"
#include "fieldline/platform/win32/system.h"
#include "tests/platform/serial_line_fixture.h"

namespace {

template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), name)));
}

std::function<void(const wchar_t*)> on_open;
std::function<void(DCB*)> after_getting;
std::function<bool(const DCB&)> on_setting;
std::function<void(const COMMTIMEOUTS&)> on_waits;
std::function<bool(COMSTAT*)> on_status;
std::vector<DWORD> purges;

HANDLE WINAPI FakeCreateFile(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD creation,
                             DWORD flags, HANDLE from) {
  if (on_open) on_open(name);
  return Real<decltype(CreateFileW)>("CreateFileW")(name, access, share, security, creation, flags, from);
}

BOOL WINAPI FakeGetCommState(HANDLE port, LPDCB settings) {
  const BOOL done = Real<decltype(GetCommState)>("GetCommState")(port, settings);
  if (after_getting) after_getting(settings);
  return done;
}

BOOL WINAPI FakeSetCommState(HANDLE port, LPDCB settings) {
  if (on_setting) return on_setting(*settings);
  return Real<decltype(SetCommState)>("SetCommState")(port, settings);
}

BOOL WINAPI FakeSetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS waits) {
  if (on_waits) on_waits(*waits);
  return Real<decltype(SetCommTimeouts)>("SetCommTimeouts")(port, waits);
}

BOOL WINAPI FakeClearCommError(HANDLE port, LPDWORD errors, LPCOMSTAT status) {
  if (on_status) return on_status(status);
  return Real<decltype(ClearCommError)>("ClearCommError")(port, errors, status);
}

BOOL WINAPI FakePurgeComm(HANDLE port, DWORD what) {
  purges.push_back(what);
  return Real<decltype(PurgeComm)>("PurgeComm")(port, what);
}

}  // namespace

// The addresses by which all code of this program calls these functions; the linker takes them in place of those of
// kernel32.
extern "C" {
extern const decltype(&CreateFileW) open_address __asm__("__imp_CreateFileW") = FakeCreateFile;
extern const decltype(&GetCommState) getting_address __asm__("__imp_GetCommState") = FakeGetCommState;
extern const decltype(&SetCommState) setting_address __asm__("__imp_SetCommState") = FakeSetCommState;
extern const decltype(&SetCommTimeouts) waits_address __asm__("__imp_SetCommTimeouts") = FakeSetCommTimeouts;
extern const decltype(&ClearCommError) status_address __asm__("__imp_ClearCommError") = FakeClearCommError;
extern const decltype(&PurgeComm) purge_address __asm__("__imp_PurgeComm") = FakePurgeComm;
}

namespace fieldline {
namespace {

class SystemCallsTest : public SerialLineFixture {
 protected:
  void TearDown() override {
    on_open = nullptr;
    after_getting = nullptr;
    on_setting = nullptr;
    on_waits = nullptr;
    on_status = nullptr;
    SerialLineFixture::TearDown();
  }
};

TEST_F(SystemCallsTest, NamesAreThoseOfDevicesUnlessTheyArePaths) {
  std::wstring opened;
  on_open = [&](const wchar_t* name) { opened = name; };
  const std::pair<const wchar_t*, const wchar_t*> kCases[] = {
      {L"NONE256:",           LR"(\\.\NONE256)"    },
      {L"\x6E29:",            L"\\\\.\\\x6E29"     },
      {L"C:/none/port:",      LR"(C:\none\port)"   },
      {LR"(\\.\none:)",       LR"(\\.\none)"       },
      {L"\xD83D\xDD25/none:", L"\xD83D\xDD25\\none"},
  };
  for (const auto& [name, path] : kCases) {
    opened.clear();
    EXPECT_NE(SerialDevice::OpenResult::kOpened, near_.Open(name));
    EXPECT_EQ(path, opened);
  }
  opened.clear();
  for (const wchar_t* name : {L":", L"", L"COM1"}) {
    EXPECT_EQ(SerialDevice::OpenResult::kNoSuchDevice, near_.Open(name));
  }
  EXPECT_EQ(L"", opened);
  EXPECT_EQ("COM10", DevicePath(L"COM10:"));
}

TEST_F(SystemCallsTest, OpenTurnsOffWhatChangesBytesAndNothingElse) {
  DCB found{};
  after_getting = [&](DCB* settings) {
    settings->fBinary = settings->fOutX = settings->fInX = settings->fErrorChar = settings->fNull =
        settings->fAbortOnError = settings->fDsrSensitivity = settings->fOutxCtsFlow = TRUE;
    settings->fRtsControl = RTS_CONTROL_HANDSHAKE;
    settings->XonLim = 77;
    found = *settings;
  };
  DCB set{};
  on_setting = [&](const DCB& settings) { return set = settings, true; };
  OpenNear();
  found.fOutX = found.fInX = found.fErrorChar = found.fNull = found.fAbortOnError = found.fDsrSensitivity = FALSE;
  EXPECT_EQ(0, std::memcmp(&found, &set, sizeof set));
}

TEST_F(SystemCallsTest, FourSettingsAreChangedAndNoOther) {
  OpenNear();
  const struct {
    LineSettings settings;
    BYTE parity;
    BYTE stop_bits;
  } kCases[] = {
      {{2400, 8, Parity::kNone, StopBits::kOne},          NOPARITY,    ONESTOPBIT  },
      {{9600, 7, Parity::kOdd, StopBits::kTwo},           ODDPARITY,   TWOSTOPBITS },
      {{19'200, 6, Parity::kEven, StopBits::kOneAndHalf}, EVENPARITY,  TWOSTOPBITS },
      {{12'345, 5, Parity::kMark, StopBits::kOneAndHalf}, MARKPARITY,  ONE5STOPBITS},
      {{250'000, 8, Parity::kSpace, StopBits::kOne},      SPACEPARITY, ONESTOPBIT  },
  };
  for (const auto& c : kCases) {
    DCB state{};
    DCB found{};
    on_setting = [&](const DCB& settings) { return state = settings, true; };
    after_getting = [&](DCB* settings) {
      if (state.DCBlength != 0) *settings = state;
      settings->fOutxCtsFlow = TRUE;
      settings->XoffLim = 77;
      if (state.DCBlength == 0) found = *settings;
    };
    EXPECT_TRUE(near_.SetLine(c.settings)) << c.settings.baud;
    found.BaudRate = c.settings.baud;
    found.ByteSize = static_cast<BYTE>(c.settings.data_bits);
    found.Parity = c.parity;
    found.StopBits = c.stop_bits;
    EXPECT_EQ(0, std::memcmp(&found, &state, sizeof state)) << c.settings.baud;
  }
}

TEST_F(SystemCallsTest, HardwareThatCannotDoItIsNotTakenForHardwareThatCan) {
  OpenNear();
  ASSERT_TRUE(near_.SetLine({.baud = 2400}));
  DCB state{};
  std::function<void(DCB*)> change;
  after_getting = [&](DCB* settings) {
    if (state.DCBlength == 0) return;
    *settings = state;
    if (change) change(settings);
  };
  on_setting = [&](const DCB& settings) { return state = settings, true; };
  ASSERT_TRUE(near_.SetLine({.baud = 2400}));
  const std::function<void(DCB*)> kRefused[] = {
      [](DCB* taken) { taken->BaudRate += 193; },  // 2 % of 9600 is 192
      [](DCB* taken) { taken->BaudRate -= 193; },
      [](DCB* taken) { taken->Parity = NOPARITY; },
      [](DCB* taken) { taken->StopBits = ONE5STOPBITS; },
  };
  for (const auto& refused : kRefused) {
    change = [&](DCB* taken) {
      if (taken->BaudRate == 9600) refused(taken);
    };
    EXPECT_FALSE(near_.SetLine({.baud = 9600, .parity = Parity::kEven})) << &refused - kRefused;
    EXPECT_EQ(2400u, state.BaudRate) << "a refusal leaves the settings that were there";
  }
  change = [](DCB* taken) { taken->BaudRate += taken->BaudRate == 9600 ? 192 : 0; };
  EXPECT_TRUE(near_.SetLine({.baud = 9600, .parity = Parity::kEven}));
  EXPECT_TRUE(near_.IsOpen());
}

TEST_F(SystemCallsTest, NoCallWaitsForLong) {
  OpenNear({INT_MAX, INT_MAX, INT_MAX, INT_MAX});
  WriteFar({'a', 'b'});
  int calls = 0;
  on_waits = [&](const COMMTIMEOUTS& waits) {
    ++calls;
    EXPECT_EQ(MAXDWORD, waits.ReadIntervalTimeout);
    EXPECT_LE(waits.ReadTotalTimeoutConstant, 50u);
    EXPECT_GE(waits.WriteTotalTimeoutConstant, 1u) << "0 is for ever";
    EXPECT_LE(waits.WriteTotalTimeoutConstant, 50u);
  };
  EXPECT_EQ((Bytes{'a', 'b'}), ReadNear(2));
  EXPECT_EQ(1, WriteNear({'c'}));
  ASSERT_TRUE(near_.SetTimeouts({0, 0, 0, 0}));
  EXPECT_EQ(Bytes{}, ReadNear(1));
  EXPECT_GE(calls, 3);
}

TEST_F(SystemCallsTest, AHaltedLineKeepsNothingBackAndAVanishedOneIsNoticed) {
  OpenNear({0, 0, 0, 10});
  on_status = [](COMSTAT* status) { return status->cbOutQue = 3, true; };
  purges.clear();
  EXPECT_EQ(1, WriteNear({1, 2, 3, 4}));
  EXPECT_EQ((std::vector<DWORD>{PURGE_TXABORT | PURGE_TXCLEAR}), purges);

  // Nothing waits to be sent: clearing would take back what has left a line in software.
  on_status = [](COMSTAT* status) { return status->cbOutQue = 0, true; };
  purges.clear();
  EXPECT_TRUE(near_.Purge());
  EXPECT_EQ((std::vector<DWORD>{PURGE_RXABORT | PURGE_RXCLEAR}), purges);

  on_status = [](COMSTAT*) { return false; };
  EXPECT_FALSE(near_.Purge());
  EXPECT_EQ(-1, WriteNear({1}));
  BYTE byte = 0;
  EXPECT_EQ(-1, near_.ReadSome(&byte, 1, 20'000));
}

}  // namespace
}  // namespace fieldline
