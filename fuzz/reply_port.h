#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include "tests/support/stub_port.h"

namespace fieldline::fuzz {

inline void Require(bool condition) {
  if (!condition) std::abort();
}

// What records hold before a poll, to see what it writes.
constexpr BYTE kOld = 0xA5;

inline void MakeOld(std::span<BYTE> bytes) { std::ranges::fill(bytes, kOld); }

inline bool IsOld(std::span<const BYTE> bytes) {
  return std::ranges::all_of(bytes, [](BYTE byte) { return byte == kOld; });
}

// Serves a fuzzer's input: each read gets one line of it, without the line feed. The first character of the input says
// what becomes of the lines: with an odd one ('1') each gets the checksum that its characters need, or little would
// come past the checksum of the drivers; with an even one ('0') they are served as they are.
class ReplyPort final : public test::StubPort {
 public:
  ReplyPort(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size), seals_(size > 0 && data[0] % 2 == 1) {
    rest_.remove_prefix(std::min<std::size_t>(1, size));
  }

  int Read(BYTE* data, int count) override {
    std::string line(rest_.substr(0, rest_.find('\n')));
    rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
    if (seals_) Seal(line);
    const std::size_t given = std::min(line.size(), static_cast<std::size_t>(count));
    std::copy_n(line.begin(), given, data);
    return static_cast<int>(given);
  }

  int Write(const BYTE*, int count) override {
    ++writes_;
    return count;
  }

  // Requests so far.
  std::size_t Writes() const { return writes_; }

 private:
  static void Seal(std::string& frame) {
    if (frame.size() < 6) return;
    const std::size_t checksum = frame.size() - 5;
    unsigned rest = 0;
    for (std::size_t i = 1; i < checksum; ++i) rest -= static_cast<unsigned char>(frame[i]);
    for (std::size_t i = 0; i < 4; ++i) frame[checksum + i] = "0123456789ABCDEF"[rest >> (12 - 4 * i) & 0xF];
  }

  std::string_view rest_;
  const bool seals_;
  std::size_t writes_ = 0;
};

}  // namespace fieldline::fuzz
