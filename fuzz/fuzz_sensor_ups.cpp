// Polls of one UPS: what a refused reply carries leaves the record alone, and what has been read once is not asked for
// again.

#include <cstring>

#include "fieldline/drivers/power/sensor_ups.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

namespace {

// Where the parts of the record begin.
constexpr std::size_t kBits = 28;
constexpr std::size_t kRatings = 37;
constexpr std::size_t kNames = 53;
constexpr std::size_t kNameLength = 64;

// Bits of m_nFlags.
constexpr int kIdentificationRead = 1;
constexpr int kRatingsRead = 2;

void PollOnce(CSensorUps& ups, ReplyPort& port) {
  const UPS_DATA before = ups.m_data;
  const int known = ups.m_nFlags;
  const std::size_t first = port.Writes();
  const std::span record(ups.m_pData, sizeof ups.m_data);
  const bool good = Poll(ups, record, port);

  const auto is_kept = [&](std::size_t begin, std::size_t end) {
    return std::memcmp(&record[begin], reinterpret_cast<const BYTE*>(&before) + begin, end - begin) == 0;
  };
  // What an accepted reply writes, and its flag when it is read once.
  const auto check_part = [&](const char* command, char mark, int flag, std::size_t begin, std::size_t end) {
    std::size_t i = first;
    while (i < port.Writes() && port.Requests()[i] != command) ++i;
    const bool is_asked = i < port.Writes();
    const bool is_accepted = is_asked && port.Replies()[i].starts_with(mark) && port.Replies()[i].ends_with('\r');
    Require(is_accepted || is_kept(begin, end));
    Require(!is_asked || (known & flag) == 0);
    Require(!good || !is_accepted || (ups.m_nFlags & flag) == flag);
  };
  check_part("Q1\r", '(', 0, 0, kRatings);
  check_part("F\r", '#', kRatingsRead, kRatings, kNames);
  check_part("I\r", '#', kIdentificationRead, kNames, sizeof before);
  Require(good || (ups.m_nFlags & kRatingsRead) == (known & kRatingsRead));

  unsigned status = 0;
  for (const BYTE bit : record.subspan(kBits + 1, 8)) status = 2 * status + std::min<unsigned>(bit, 2);
  const bool is_read = good || port.Writes() > first + 1;
  Require(is_read ? status == ups.m_data.status : is_kept(kBits, kRatings));

  for (std::size_t at = kNames + kNameLength - 2; at < record.size(); at += kNameLength) {
    Require(IsOld(record.subspan(at, 2)) || (record[at] == 0 && record[at + 1] == 0));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ReplyPort port(data, size, ReplyPort::kLine, nullptr);
  CSensorUps ups;
  MakeOld({ups.m_pData, sizeof ups.m_data});
  for (int polls = 0; polls < 4 && !port.AtEnd(); ++polls) PollOnce(ups, port);
  return 0;
}
