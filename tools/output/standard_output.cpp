#include "tools/output/standard_output.h"

#include <iostream>
#include <utility>

namespace fieldline::tool {
namespace {

StandardOutput* instance = nullptr;

}  // namespace

StandardOutput::StandardOutput() : replaced_(std::cout.rdbuf(this)) {
  file_.UseStandardOutput();
  instance = this;
}

StandardOutput::~StandardOutput() {
  sync();
  instance = nullptr;
  std::cout.rdbuf(replaced_);
}

StandardOutput::int_type StandardOutput::overflow(int_type character) {
  const char text = traits_type::to_char_type(character);
  xsputn(&text, 1);
  return traits_type::not_eof(character);
}

std::streamsize StandardOutput::xsputn(const char* text, std::streamsize count) {
  constexpr std::size_t kMost = 65536;
  const std::lock_guard lock(mutex_);
  collected_.append(text, static_cast<std::size_t>(count));
  if (collected_.size() >= kMost) WriteLinesLocked({});
  return count;
}

// Always succeeds: a failed stream would silently drop what other threads print.
int StandardOutput::sync() {
  const std::lock_guard lock(mutex_);
  file_.Append(std::exchange(collected_, {}));
  return 0;
}

void StandardOutput::WriteLinesLocked(std::string_view lines) {
  const std::size_t whole = collected_.rfind('\n') + 1;  // 0 when there is none
  file_.Append(collected_.substr(0, whole).append(lines));
  collected_.erase(0, whole);
}

void PrintLines(std::string_view lines) {
  if (instance == nullptr) {
    std::cout << lines << std::flush;
    return;
  }
  const std::lock_guard lock(instance->mutex_);
  instance->WriteLinesLocked(lines);
}

}  // namespace fieldline::tool
