#include "sim/devices/ascii/hex_ascii.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>

namespace fieldline::sim {
namespace {

// Positions in a frame. A reply has its return code in the place of the command.
constexpr std::size_t kAddress = 3;
constexpr std::size_t kCommand = 7;
constexpr std::size_t kLength = 9;
constexpr std::size_t kInfo = 13;

constexpr std::size_t kTrail = 5;  // checksum and carriage return

constexpr unsigned kNormal = 0;
constexpr unsigned kUnknownCommand = 4;

std::string Hex(unsigned value, std::size_t digits) {
  std::string text;
  for (; digits > 0; --digits, value /= 16) text.insert(text.begin(), "0123456789ABCDEF"[value % 16]);
  return text;
}

// The check nibble makes the sum of the four nibbles a multiple of 16.
std::string Length(std::size_t characters) {
  const auto count = static_cast<unsigned>(characters);
  const unsigned nibbles = count / 256 + count / 16 % 16 + count % 16;
  return Hex((16 - nibbles % 16) % 16, 1) + Hex(count, 3);
}

// The sum of this checksum and all characters after the start is a multiple of 65536.
std::string Checksum(std::string_view frame) {
  unsigned sum = 0;
  for (const char c : frame.substr(1)) sum += static_cast<unsigned char>(c);
  return Hex((65536 - sum % 65536) % 65536, 4);
}

std::string Frame(const std::string& head, unsigned return_code, const std::string& info) {
  const std::string frame = head + HexByte(return_code) + Length(info.size()) + info;
  return frame + Checksum(frame) + '\r';
}

}  // namespace

HexAsciiDevice::HexAsciiDevice(const Identity& identity)
    : head_(identity.start + HexByte(identity.version) + HexByte(identity.address) + HexByte(identity.type)),
      address_(identity.address) {}

std::size_t HexAsciiDevice::Receive(std::span<const BYTE> received, bool /*silent*/, std::vector<Reply>& replies) {
  const auto end = std::ranges::find(received, '\r');
  if (end == received.end()) return 0;
  const std::string request(received.begin(), end + 1);
  if (request.size() < kInfo + kTrail || !request.starts_with(head_)) return 0;

  const std::string sound = request.substr(0, request.size() - kTrail);
  const std::string info = sound.substr(kInfo);
  if (request.substr(kLength, 4) != Length(info.size()) || request != sound + Checksum(sound) + '\r') return 0;

  unsigned command = 0;
  std::from_chars(&request[kCommand], &request[kCommand] + 2, command, 16);
  const std::optional<std::string> answer = Answer(command, info);
  const std::string reply = answer ? Frame(head_, kNormal, *answer) : Frame(head_, kUnknownCommand, "");
  replies.push_back({Bytes(reply.begin(), reply.end())});
  return request.size();
}

void HexAsciiDevice::ChangeAddress(Bytes& reply) const {
  if (reply.size() < kInfo + kTrail) return;
  std::string frame(reply.begin(), reply.end() - kTrail);
  frame.replace(kAddress, 2, HexByte(address_ + 1));
  frame += Checksum(frame) + '\r';
  reply.assign(frame.begin(), frame.end());
}

std::string HexByte(unsigned value) { return Hex(value, 2); }

std::string HexWord(unsigned value) { return Hex(value, 4); }

std::string HexFloat(double value) {
  const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(value));
  return HexByte(bits) + HexByte(bits >> 8) + HexByte(bits >> 16) + HexByte(bits >> 24);
}

}  // namespace fieldline::sim
