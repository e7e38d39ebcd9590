#pragma once

#include <span>
#include <string>
#include <string_view>

#include "fieldline/types.h"
#include "polling/line_file.h"

namespace fieldline {

// Shows blocks of bytes as they pass on a line. Thread-safe.
class TraceOutput {
 public:
  // `trace` is "-" for standard error, the path of a file, which is overwritten, or empty for no trace. Throws
  // UsageError when the file can't be opened.
  explicit TraceOutput(const std::string& trace);

  bool IsWanted() const { return kind_ != Kind::kNone; }

  // Shows time, `mark` and bytes, and below them the meaning. Long blocks, such as pictures, are shortened on standard
  // error and complete in a file.
  void Show(std::string_view mark, std::span<const BYTE> bytes, std::string_view meaning);

 private:
  enum class Kind { kNone, kStandardError, kFile };

  Kind kind_ = Kind::kNone;
  LineFile file_;
};

}  // namespace fieldline
