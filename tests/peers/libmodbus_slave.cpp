#include "tests/peers/libmodbus_slave.h"

#include <gtest/gtest.h>

#include <utility>

namespace fieldline::test {
namespace {

unsigned Count(const LibmodbusSlave::Range& range) { return static_cast<unsigned>(range.last - range.first + 1); }

}  // namespace

LibmodbusSlave::LibmodbusSlave(int address, const Map& map) {
  EXPECT_TRUE(near_.Open() && far_.Open());
  context_ = modbus_new_rtu(far_.Path(), 115200, 'N', 8, 1);
  map_ = modbus_mapping_new_start_address(
      static_cast<unsigned>(map.coils.first), Count(map.coils), static_cast<unsigned>(map.inputs.first),
      Count(map.inputs), static_cast<unsigned>(map.holding_registers.first), Count(map.holding_registers),
      static_cast<unsigned>(map.input_registers.first), Count(map.input_registers));
  EXPECT_TRUE(context_ && map_);
  EXPECT_EQ(modbus_set_slave(context_, address), 0);
  EXPECT_EQ(modbus_connect(context_), 0);
}

LibmodbusSlave::~LibmodbusSlave() {
  stop_ = true;
  for (std::thread& thread : threads_) thread.join();
  modbus_mapping_free(map_);
  modbus_close(context_);
  modbus_free(context_);
}

void LibmodbusSlave::Start() {
  threads_.emplace_back([this] { Bridge(near_, far_); });
  threads_.emplace_back([this] { Bridge(far_, near_); });
  threads_.emplace_back([this] { Serve(); });
}

void LibmodbusSlave::Bridge(PseudoTerminal& from, PseudoTerminal& to) {
  while (!stop_) {
    BYTE bytes[256];
    const int count = from.Read(bytes, sizeof bytes, 20);
    if (count > 0) to.Write(bytes, count);
  }
}

void LibmodbusSlave::Serve() {
  modbus_set_indication_timeout(context_, 0, 50000);
  while (!stop_) {
    BYTE request[MODBUS_RTU_MAX_ADU_LENGTH];
    const int length = modbus_receive(context_, request);
    if (length <= 0) continue;
    if (raw_reply_.empty()) {
      modbus_reply(context_, request, length, map_);
    } else {
      modbus_send_raw_request(context_, raw_reply_.data(), static_cast<int>(raw_reply_.size()));
    }
  }
}

}  // namespace fieldline::test
