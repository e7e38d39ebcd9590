#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace fieldline {

// What a program writes text to: a file, or its standard output. Unlike a stream it tells why a write failed. One
// thread uses it at a time. Used by the command; not part of the library.
class OutputFile {
 public:
  OutputFile() = default;
  ~OutputFile() { Close(); }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  enum class Mode { kNew, kAppend };

  // Opens the file, which is emptied or kept, and made if there is none. The reason when that fails.
  std::error_code Open(const std::string& path, Mode mode);
  void UseStandardOutput();

  // Does nothing when not open. Standard output stays open for others.
  void Close();

  // Writes all of `text`; the reason when that fails, std::errc::broken_pipe when nobody reads the pipe.
  std::error_code Write(std::string_view text);

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t handle_ = kInvalidHandle;
  bool owned_ = false;
};

}  // namespace fieldline
