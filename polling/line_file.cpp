#include "polling/line_file.h"

#include "fieldline/platform/console.h"

namespace fieldline {
namespace {

struct FirstFailure {
  std::mutex mutex;
  std::optional<std::string> text;
};

FirstFailure& TheFirstFailure() {
  static FirstFailure failure;
  return failure;
}

}  // namespace

std::error_code LineFile::Open(const std::string& path, Mode mode) {
  const std::lock_guard lock(mutex_);
  path_ = path;
  name_ = path;
  return file_.Open(path, mode);
}

void LineFile::UseStandardOutput() {
  const std::lock_guard lock(mutex_);
  name_ = "standard output";
  file_.UseStandardOutput();
}

void LineFile::Append(std::string_view lines) {
  const std::lock_guard lock(mutex_);
  if (failed_) return;
  if (const std::error_code error = file_.Write(lines)) FailLocked(error);
}

void LineFile::Reopen() {
  const std::lock_guard lock(mutex_);
  if (failed_) return;
  if (const std::error_code error = file_.Open(path_, Mode::kAppend)) FailLocked(error);
}

void LineFile::FailLocked(std::error_code error) {
  failed_ = true;
  if (error != std::errc::broken_pipe) {
    FirstFailure& first = TheFirstFailure();
    const std::lock_guard lock(first.mutex);
    if (!first.text) first.text = name_ + ": " + error.message();
  }
  Interrupt();
}

std::optional<std::string> OutputFailure() {
  FirstFailure& first = TheFirstFailure();
  const std::lock_guard lock(first.mutex);
  return first.text;
}

}  // namespace fieldline
