#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "fieldline/platform/output_file.h"

namespace fieldline {

// A file of lines, or standard output. Thread-safe. The first failed write to any line file interrupts the program as
// Ctrl-C does, so that every loop ends soon; OutputFailure() then gives the reason. After a failure, the file drops
// what is appended.
class LineFile {
 public:
  using Mode = OutputFile::Mode;

  // Opens the file. Returns the reason when that fails; the program is not interrupted.
  std::error_code Open(const std::string& path, Mode mode);
  void UseStandardOutput();

  // Writes one or more whole lines at once.
  void Append(std::string_view lines);

  // Opens the path again, for log rotation. Creates the file if it was moved.
  void Reopen();

 private:
  void FailLocked(std::error_code error);

  std::mutex mutex_;  // of all below
  std::string path_;
  std::string name_;  // for messages
  OutputFile file_;
  bool failed_ = false;
};

// "FILE: No space left on device" after a line file failed. Nothing for a pipe without a reader: the reader has got
// what it wanted.
std::optional<std::string> OutputFailure();

}  // namespace fieldline
