#include "fieldline/platform/output_file.h"

#include <algorithm>

#include "fieldline/platform/win32/system.h"

namespace fieldline {

namespace {

std::error_code Reason(DWORD error) {
  const bool unread = error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA;
  if (unread) return std::make_error_code(std::errc::broken_pipe);
  return {static_cast<int>(error), std::system_category()};
}

}  // namespace

std::error_code OutputFile::Open(const std::string& path, Mode mode) {
  Close();
  WidePath wide;
  if (!ToWidePath(path.c_str(), wide)) return std::make_error_code(std::errc::filename_too_long);
  const bool anew = mode == Mode::kNew;
  handle_ = AsNumber(CreateFileW(wide, anew ? GENERIC_WRITE : FILE_APPEND_DATA,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 anew ? CREATE_ALWAYS : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  owned_ = handle_ != kInvalidHandle;
  return owned_ ? std::error_code() : Reason(GetLastError());
}

void OutputFile::UseStandardOutput() {
  Close();
  handle_ = AsNumber(GetStdHandle(STD_OUTPUT_HANDLE));
}

void OutputFile::Close() {
  if (owned_) CloseHandle(AsHandle(handle_));
  handle_ = kInvalidHandle;
  owned_ = false;
}

std::error_code OutputFile::Write(std::string_view text) {
  constexpr std::size_t kMost = 16 * 1024;  // more at once than some consoles take
  while (!text.empty()) {
    DWORD taken = 0;
    const auto count = static_cast<DWORD>(std::min(text.size(), kMost));
    if (!WriteFile(AsHandle(handle_), text.data(), count, &taken, nullptr)) return Reason(GetLastError());
    if (taken == 0) return std::make_error_code(std::errc::no_space_on_device);
    text.remove_prefix(taken);
  }
  return {};
}

}  // namespace fieldline
