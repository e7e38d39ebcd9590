#pragma once

#include <mutex>
#include <streambuf>
#include <string>
#include <string_view>

#include "polling/line_file.h"

namespace fieldline::tool {

// Redirects std::cout to a LineFile while it exists, so that a failed write interrupts the program. main() has the only
// one.
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

  // Writes the whole lines collected so far, then `lines`. The beginning of a line stays collected.
  void WriteLinesLocked(std::string_view lines);

  std::streambuf* const replaced_;
  LineFile file_;
  std::mutex mutex_;
  std::string collected_;
};

// Prints whole lines on standard output at once, without splitting a line of std::cout. Thread-safe; std::cout itself
// belongs to the thread of the verb.
void PrintLines(std::string_view lines);

}  // namespace fieldline::tool
