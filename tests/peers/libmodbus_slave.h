#pragma once

#include <gtest/gtest.h>
#include <modbus.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "fieldline/platform/pseudo_terminal.h"

namespace fieldline::test {

inline constexpr int kDevice = 4;

// For so many ms after a request to another slave libmodbus takes what comes for that slave's reply.
inline constexpr int kDeafTime = 100;

// Register k of the slave holds `base` + k, and every other bit is set, from the first on. Each table has so many
// items, from `first` on; what is asked for beyond gives an exception.
class LibmodbusSlave {
 public:
  LibmodbusSlave(int base, int first, int bits, int registers) {
    EXPECT_TRUE(near_.Open() && far_.Open());
    context_.reset(modbus_new_rtu(far_.Path(), 115200, 'N', 8, 1));
    const auto start = static_cast<unsigned>(first);
    const auto bit_count = static_cast<unsigned>(bits);
    const auto register_count = static_cast<unsigned>(registers);
    map_.reset(modbus_mapping_new_start_address(start, bit_count, start, bit_count, start, register_count, start,
                                                register_count));
    for (int k = 0; k < bits; ++k) map_->tab_bits[k] = map_->tab_input_bits[k] = k % 2 == 0;
    for (int k = 0; k < registers; ++k) {
      map_->tab_registers[k] = map_->tab_input_registers[k] = static_cast<WORD>(base + first + k);
    }
    EXPECT_EQ(modbus_set_slave(context_.get(), kDevice), 0);
    EXPECT_EQ(modbus_connect(context_.get()), 0);
    modbus_set_response_timeout(context_.get(), 0, kDeafTime * 1000);
    modbus_set_indication_timeout(context_.get(), 0, 50000);
    threads_.emplace_back([this] { Bridge(near_, far_); });
    threads_.emplace_back([this] { Bridge(far_, near_); });
    threads_.emplace_back([this] { Serve(); });
  }
  ~LibmodbusSlave() {
    stop_ = true;
    for (std::thread& thread : threads_) thread.join();
    modbus_close(context_.get());
  }

  const char* Path() const { return near_.Path(); }

 private:
  void Bridge(PseudoTerminal& from, PseudoTerminal& to) {
    while (!stop_) {
      BYTE bytes[256];
      const int count = from.Read(bytes, sizeof bytes, 20);
      if (count > 0) to.Write(bytes, count);
    }
  }
  void Serve() {
    while (!stop_) {
      BYTE request[MODBUS_RTU_MAX_ADU_LENGTH];
      const int length = modbus_receive(context_.get(), request);
      if (length > 0) modbus_reply(context_.get(), request, length, map_.get());
    }
  }

  // Both libraries open a terminal, so the line consists of two, joined by two threads.
  PseudoTerminal near_;
  PseudoTerminal far_;
  std::unique_ptr<modbus_t, decltype(&modbus_free)> context_{nullptr, modbus_free};
  std::unique_ptr<modbus_mapping_t, decltype(&modbus_mapping_free)> map_{nullptr, modbus_mapping_free};
  std::atomic<bool> stop_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace fieldline::test
