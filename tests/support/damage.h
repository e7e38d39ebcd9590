#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "fieldline/sensor/sensor_base.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {

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

struct DamageCase {
  std::function<std::unique_ptr<CSensorBase>()> make;
  int addr;
  std::vector<Exchange> exchanges;
  int record_size;
};

// Polls with each exchange in turn damaged in every way: the reply cut at each length, each of its bits flipped, its
// last two bytes swapped, silence, and a request that was not sent whole. Each must give 0, end the poll, and leave in
// the record what the exchanges before the damaged one write, and nothing else. The undamaged poll must give 1.
void ExpectRejectsDamage(const DamageCase& damage);

}  // namespace fieldline::test
