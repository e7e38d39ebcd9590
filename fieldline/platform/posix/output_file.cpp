#include "fieldline/platform/output_file.h"

#include <unistd.h>

#include <cerrno>

#include "fieldline/platform/posix/open_file.h"
#include "fieldline/platform/posix/wait.h"

namespace fieldline {

std::error_code OutputFile::Open(const std::string& path, Mode mode) {
  Close();
  const int start = mode == Mode::kNew ? O_TRUNC : O_APPEND;
  handle_ = OpenFile(path.c_str(), O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC | start, 0666);
  owned_ = handle_ != kInvalidHandle;
  return owned_ ? std::error_code() : std::error_code(errno, std::generic_category());
}

void OutputFile::UseStandardOutput() {
  Close();
  handle_ = STDOUT_FILENO;
}

void OutputFile::Close() {
  if (owned_) close(static_cast<int>(handle_));
  handle_ = kInvalidHandle;
  owned_ = false;
}

std::error_code OutputFile::Write(std::string_view text) {
  constexpr int kWait = 1000;  // ms
  const int descriptor = static_cast<int>(handle_);
  while (!text.empty()) {
    const ssize_t taken = write(descriptor, text.data(), text.size());
    if (taken > 0) {
      text.remove_prefix(static_cast<std::size_t>(taken));
    } else if (taken < 0 && errno == EAGAIN) {
      WaitFor(descriptor, POLLOUT, Deadline(kWait));  // whoever shares the terminal or pipe made it non-blocking
    } else if (taken == 0 || errno != EINTR) {
      return {taken == 0 ? ENOSPC : errno, std::generic_category()};
    }
  }
  return {};
}

}  // namespace fieldline
