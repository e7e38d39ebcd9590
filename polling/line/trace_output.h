#pragma once

#include <span>
#include <string>
#include <string_view>

#include "fieldline/types.h"
#include "polling/line_file.h"

namespace fieldline {

// Where blocks of bytes are shown as they pass. Any thread may show one.
class TraceOutput {
 public:
  // "-" for standard error, a path for a file, which is made anew, or nothing. Throws UsageError when the file can't be
  // opened.
  explicit TraceOutput(const std::string& trace);

  bool IsWanted() const { return kind_ != Kind::kNone; }

  // The time, `mark`, the bytes, and what they mean below them. A file has all bytes, standard error no whole pictures.
  void Show(std::string_view mark, std::span<const BYTE> bytes, std::string_view meaning);

 private:
  enum class Kind { kNone, kStandardError, kFile };

  Kind kind_ = Kind::kNone;
  LineFile file_;
};

}  // namespace fieldline
