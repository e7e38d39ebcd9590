#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {
namespace {

enum Exception : BYTE { kIllegalFunction = 1, kIllegalAddress = 2, kIllegalCount = 3 };

constexpr std::size_t kShortestFrame = 4;  // address, function, CRC

Bytes Refusal(BYTE function, Exception exception) { return {static_cast<BYTE>(function | 0x80), exception}; }

// The CRC as the protocol defines it, one bit at a time. It is sent low byte first.
unsigned Crc(std::span<const BYTE> bytes) {
  unsigned crc = 0xFFFF;
  for (const BYTE byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
  }
  return crc;
}

void AppendCrc(Bytes& frame) {
  const unsigned crc = Crc(frame);
  frame.push_back(static_cast<BYTE>(crc & 0xFF));
  frame.push_back(static_cast<BYTE>(crc >> 8));
}

void Append(Bytes& data, const std::map<WORD, WORD>& registers, WORD first, unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    const unsigned value = registers.at(static_cast<WORD>(first + i));
    data.push_back(static_cast<BYTE>(value >> 8));
    data.push_back(static_cast<BYTE>(value & 0xFF));
  }
}

void Append(Bytes& data, const std::map<WORD, bool>& bits, WORD first, unsigned count) {
  const std::size_t start = data.size();
  data.resize(start + (count + 7) / 8);
  for (unsigned i = 0; i < count; ++i) {
    if (bits.at(static_cast<WORD>(first + i))) data[start + i / 8] |= static_cast<BYTE>(1u << i % 8);
  }
}

template <typename T>
Bytes Read(const std::map<WORD, T>& items, std::span<const BYTE> request, unsigned most) {
  const BYTE function = request[0];
  if (request.size() != 5) return Refusal(function, kIllegalCount);
  const unsigned first = request[1] * 256u + request[2];
  const unsigned count = request[3] * 256u + request[4];
  if (count < 1 || count > most) return Refusal(function, kIllegalCount);
  for (unsigned i = first; i < first + count; ++i) {
    if (i > 0xFFFF || !items.contains(static_cast<WORD>(i))) return Refusal(function, kIllegalAddress);
  }
  Bytes answer = {function, 0};
  Append(answer, items, static_cast<WORD>(first), count);
  answer[1] = static_cast<BYTE>(answer.size() - 2);
  return answer;
}

}  // namespace

std::size_t ModbusSlave::Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) {
  if (!silent || received.size() < kShortestFrame || received[0] != address_) return 0;
  const std::span frame = received.first(received.size() - 2);
  const std::span crc = received.last(2);
  if (Crc(frame) != crc[0] + crc[1] * 256u) return 0;

  Refresh();
  Bytes reply = {address_};
  const Bytes answer = Answer(frame.subspan(1));
  reply.insert(reply.end(), answer.begin(), answer.end());
  AppendCrc(reply);
  replies.push_back({std::move(reply), delay_});
  return received.size();
}

void ModbusSlave::ChangeAddress(Bytes& reply) const {
  if (reply.size() < kShortestFrame) return;
  ++reply[0];
  reply.resize(reply.size() - 2);
  AppendCrc(reply);
}

Bytes ModbusSlave::Answer(std::span<const BYTE> request) {
  constexpr unsigned kMostBits = 2000;
  constexpr unsigned kMostRegisters = 125;
  switch (request[0]) {
    case 1:
      return Read(coils_, request, kMostBits);
    case 2:
      return Read(discrete_inputs_, request, kMostBits);
    case 3:
      return Read(holding_registers_, request, kMostRegisters);
    case 4:
      return Read(input_registers_, request, kMostRegisters);
    default:
      return Refusal(request[0], kIllegalFunction);
  }
}

}  // namespace fieldline::sim
