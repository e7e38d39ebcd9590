#pragma once

#include <mutex>
#include <streambuf>
#include <string>
#include <string_view>

#include "polling/line_file.h"

namespace fieldline::tool {

// While it lives, std::cout writes through here: whole pieces, with an end to the program's work when they can't be
// written; see LineFile. There is one, in main().
class StandardOutput final : private std::streambuf {
 public:
  StandardOutput();
  ~StandardOutput() override;
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

 private:
  friend void PrintLines(std::string_view lines);

  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int sync() override;

  // Writes what is collected, without the beginning of a line if there is one, and then `lines`.
  void WriteLinesLocked(std::string_view lines);

  std::streambuf* const replaced_;
  LineFile file_;
  std::mutex mutex_;
  std::string collected_;
};

// Prints whole lines on standard output at once. May be called from any thread, while std::cout itself belongs to the
// thread of the verb: what others print never splits its lines.
void PrintLines(std::string_view lines);

}  // namespace fieldline::tool
