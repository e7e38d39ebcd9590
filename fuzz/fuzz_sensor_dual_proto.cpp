// The unit with two protocols. The first byte is its address: an even one speaks Modbus and has its record written
// reply by reply, an odd one sends one frame and has it written whole or not at all.

#include <array>
#include <bit>

#include "fieldline/drivers/power/sensor_dual_proto.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr std::size_t kLeastData[] = {12, 4, 28, 1};
  static constexpr std::size_t kLeastBody = 132;
  // The Modbus reply that writes each word; z is the third, too, which writes a zero.
  static constexpr std::string_view kWriters = "333333312zzzz11zzzzzzzzzzzzzzzzzz4";

  if (size == 0) return 0;
  const bool is_modbus = data[0] % 2 == 0;
  ReplyPort port(data + 1, size - 1, ReplyPort::kCounted, nullptr);
  CSensorDualProto unit;
  const std::span record(unit.m_pData, sizeof unit.m_data);
  MakeOld(record);
  const bool good = Poll(unit, record, port, data[0]);

  // The head of a reply announces how many bytes follow; a CRC comes on top.
  const std::size_t accepted = port.Writes() - (good ? 0 : 1);
  for (std::size_t i = 0; i < accepted; ++i) {
    const std::string& head = port.Replies()[2 * i];
    const std::string& rest = port.Replies()[2 * i + 1];
    Require(head.size() == 3 && rest.size() == Byte(head[2]) + (is_modbus ? 2u : 0u));
    Require(Byte(head[2]) >= (is_modbus ? kLeastData[i] : kLeastBody));
  }
  if (!is_modbus) {
    Require(good ? unit.m_data.state <= 1 : IsOld(record));
    return 0;
  }
  const auto words = std::bit_cast<std::array<std::uint16_t, kWriters.size()>>(unit.m_data);
  for (std::size_t i = 0; i < words.size(); ++i) {
    const bool is_zero = kWriters[i] == 'z';
    const std::size_t writer = is_zero ? 3 : Byte(kWriters[i]) - '0';
    Require(writer > accepted ? words[i] == kOld * 0x0101 : !is_zero || words[i] == 0);
  }
  return 0;
}
