#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "fieldline/platform/output_file.h"

namespace fieldline {

// A file of lines, or standard output. Any thread may append. The first piece that can't be written, to whichever of
// them, interrupts the program as Ctrl-C does, so that every loop ends soon; the program then finds the reason below.
// What is appended to a file after its failure is dropped.
class LineFile {
 public:
  using Mode = OutputFile::Mode;

  // Opens the file. The reason when that fails, which interrupts nothing.
  std::error_code Open(const std::string& path, Mode mode);
  void UseStandardOutput();

  // One or more whole lines, which are written at once.
  void Append(std::string_view lines);

  // Appends from now on to what has the path that was opened, which is made if it was moved away.
  void Reopen();

 private:
  void FailLocked(std::error_code error);

  std::mutex mutex_;  // of all below
  std::string path_;
  std::string name_;  // for messages
  OutputFile file_;
  bool failed_ = false;
};

// "FILE: No space left on device", once a line file failed. Not for a pipe that nobody reads any more: its reader has
// what it wanted.
std::optional<std::string> OutputFailure();

}  // namespace fieldline
