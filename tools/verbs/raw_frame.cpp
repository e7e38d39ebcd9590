#include "tools/verbs/raw_frame.h"

#include <charconv>

#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/sensor/modbus.h"
#include "polling/protocol/alarm_frame.h"
#include "tools/verbs/verb.h"

namespace fieldline::tool {
namespace {

void RequireSize(const Bytes& bytes, std::size_t least, std::size_t most, const std::string& what) {
  if (bytes.size() >= least && bytes.size() <= most) return;
  throw UsageError("--append needs " + what + ": " + std::to_string(least) + " to " + std::to_string(most) +
                   " bytes, not " + std::to_string(bytes.size()));
}

// Value of the first two hexadecimal digits of `text`, -1 when there are none.
int HexByte(std::string_view text) {
  int value = 0;
  if (text.size() < 2) return -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + 2, value, 16);
  return error == std::errc{} && end == text.data() + 2 && value >= 0 ? value : -1;
}

Bytes WithCrc(Bytes bytes) {
  RequireSize(bytes, 1, 255, "device, function and data");
  const WORD crc = CRC16(bytes.data(), static_cast<BYTE>(bytes.size()));
  bytes.push_back(static_cast<BYTE>(crc & 0xFF));
  bytes.push_back(static_cast<BYTE>(crc >> 8));
  return bytes;
}

Bytes HexAsciiFrame(const Bytes& bytes) {
  constexpr std::size_t kHead = 4;
  constexpr std::size_t kMostInfo = 0xFFF / 2;
  RequireSize(bytes, kHead, kHead + kMostInfo, "VER, ADR, CID1, CID2 and INFO");
  Bytes info;
  for (std::size_t i = kHead; i < bytes.size(); ++i) {
    info.push_back(GetHexHigh(bytes[i]));
    info.push_back(GetHexLow(bytes[i]));
  }
  const auto lenid = static_cast<WORD>(info.size());
  Bytes frame(static_cast<std::size_t>(FrameLength(lenid)));
  BuildFrame(frame.data(), bytes[0], bytes[1], bytes[2], bytes[3], info.data(), lenid);
  return frame;
}

Bytes AlarmFrame(const Bytes& bytes) {
  RequireSize(bytes, 1, 1 + kMostAlarmPayload, "command and payload");
  return MakeAlarmFrame(bytes[0], std::span(bytes).subspan(1));
}

}  // namespace

Bytes ParseHexBytes(const std::vector<std::string>& words) {
  Bytes bytes;
  for (std::string_view word : words) {
    while (!word.empty()) {
      if (word.front() == ' ') {
        word.remove_prefix(1);
        continue;
      }
      const int value = HexByte(word);
      if (value < 0) {
        throw UsageError("\"" + std::string(word) +
                         "\" is not a hexadecimal byte; write two digits for each, such as 01 03");
      }
      bytes.push_back(static_cast<BYTE>(value));
      word.remove_prefix(2);
    }
  }
  return bytes;
}

Bytes ParseEscapes(std::string_view text) {
  Bytes bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes.push_back(static_cast<BYTE>(text[i]));
      continue;
    }
    const char escape = ++i < text.size() ? text[i] : '\0';
    if (escape == 'r') {
      bytes.push_back('\r');
    } else if (escape == 'n') {
      bytes.push_back('\n');
    } else if (escape == '\\') {
      bytes.push_back('\\');
    } else if (const int value = escape == 'x' ? HexByte(text.substr(i + 1)) : -1; value >= 0) {
      bytes.push_back(static_cast<BYTE>(value));
      i += 2;
    } else {
      throw UsageError("--text \"" + std::string(text) +
                       "\": after a backslash write r, n, xNN with two digits, or a second backslash");
    }
  }
  return bytes;
}

Bytes MakeFrame(const std::string& form, const Bytes& bytes) {
  if (form == "crc16") return WithCrc(bytes);
  if (form == "hex-ascii") return HexAsciiFrame(bytes);
  if (form == "alarm") return AlarmFrame(bytes);
  if (form.empty()) return bytes;
  throw UsageError("--append " + form + ": write crc16, hex-ascii or alarm");
}

}  // namespace fieldline::tool
