// The codec: a reply that passes the check has what the check promises, and a frame built around any INFO passes it
// exactly when its characters are a frame's.

#include <array>

#include "fieldline/drivers/ascii/hex_frame.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

namespace {

constexpr std::size_t kMostInfo = 4095;

bool IsFrameText(std::string_view text) {
  return text.find_first_not_of("~\r0123456789ABCDEF") == std::string_view::npos;
}

void CheckAsReply(const std::uint8_t* data, std::size_t size) {
  const int length = static_cast<int>(size);
  Require(!CheckReply(data, length, length + 1));
  if (!CheckReply(data, length, length)) return;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Require(size >= 18 && text.substr(7, 2) == "00" && IsFrameText(text));
  unsigned sum = 0;
  for (const char c : text.substr(1, size - 6)) sum += static_cast<unsigned char>(c);
  Require((sum + GetHexWord(data + size - 5)) % 65536 == 0);
}

void BuildAround(const std::uint8_t* info, std::size_t size) {
  std::array<BYTE, kMostInfo + 18 + 1> frame;
  frame.fill(kOld);
  const int length = BuildFrame(frame.data(), 0x20, 0x01, 0x46, 0x00, info, static_cast<WORD>(size));
  Require(length == static_cast<int>(size) + 18 && frame[size + 18] == kOld);
  const bool sound = IsFrameText({reinterpret_cast<const char*>(info), size});
  Require(CheckReply(frame.data(), length, length) == sound);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckAsReply(data, size);
  BuildAround(data, std::min(size, kMostInfo));
  for (std::size_t i = 0; i + 8 <= size; i += 8) {
    const double value = GetHexFloat(data + i);
    Require(value > 0);
    const double tenths = GetScaledValue(value, 1);
    Require(tenths >= 0 && tenths <= value * 10 + 1);
  }
  return 0;
}
