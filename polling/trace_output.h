#pragma once

#include <fstream>
#include <mutex>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "fieldline/types.h"

namespace fieldline {

// Where blocks of bytes are shown as they pass. Any thread may show one.
class TraceOutput {
 public:
  // "-" for standard error, a path for a file, which is made anew, or nothing. Throws UsageError when the file can't be
  // written.
  explicit TraceOutput(const std::string& trace);

  bool IsWanted() const { return out_ != nullptr; }

  // The time, `mark`, the bytes, and what they mean below them. A file has all bytes, standard error no whole pictures.
  void Show(std::string_view mark, std::span<const BYTE> bytes, std::string_view meaning);

 private:
  std::ofstream file_;
  std::ostream* out_ = nullptr;
  std::mutex mutex_;
};

}  // namespace fieldline
