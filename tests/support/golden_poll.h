#pragma once

#include <string>
#include <vector>

#include "fieldline/sensor/sensor_base.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {

// What the record holds before a poll.
constexpr BYTE kOld = 0xA5;

struct Range {
  int position;
  int length;
};

// One request of a poll and the undamaged reply to it.
struct Exchange {
  Bytes request;
  int ask;  // bytes that the driver asks for
  Bytes reply;
  std::vector<Range> writes =
      {};  // what of the record this exchange alone writes at once; none when it waits for the rest
};

// A poll as it passes on the line, and the record that it leaves. Only the low byte of the address goes on the wire.
struct GoldenPoll {
  ENUM_SERDATKIND kind;
  int addr;
  std::vector<Exchange> exchanges;
  Bytes record;
};

// Numbers of so many bytes each, least significant first.
Bytes Numbers(int bytes_each, const std::vector<unsigned>& numbers);

// The poll must give 1 and its record.
void ExpectRecord(const GoldenPoll& poll);

// With another reply in exchange `i` the poll must give 0, end there, and leave in the record what the exchanges before
// it write, and nothing else.
void ExpectRefusal(const GoldenPoll& poll, std::size_t i, const Bytes& reply);

// The poll must give its record, a closed port nothing, and every damage to an exchange the same as a refused reply:
// the reply cut at each length, each of its bits flipped, its last two bytes swapped, silence, and a request that was
// not sent whole.
void ExpectRecordAndRejectsDamage(const GoldenPoll& poll);

}  // namespace fieldline::test
