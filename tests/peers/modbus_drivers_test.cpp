// Modbus drivers against a slave that this project did not write, built on libmodbus, over a real line.

#include <gtest/gtest.h>
#include <modbus.h>

#include <atomic>
#include <bit>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "fieldline/fieldline.h"
#include "fieldline/platform/pseudo_terminal.h"
#include "fieldline/sensor/make_driver.h"

namespace fieldline::test {
namespace {

constexpr int kDevice = 4;

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

// The functions 1 to 4, one of them at least in each case.
TEST(LibmodbusPeer, AnswersFromTheRegistersThatAreAsked) {
  struct Part {
    int position;
    int bytes;
    std::uint32_t number;
  };
  // clang-format off
  const struct {
    ENUM_SERDATKIND kind;
    int base, first, bits, registers;
    std::vector<Part> record;  // empty: the poll fails
  } cases[] = {
      {SERDAT_ENVIR,      0xFED0, 0,    0,   2,   {{0, 4, 0xFED1}, {4, 4, 0xFED0}}},
      {SERDAT_ENVIR,      0,      0,    0,   1,   {}},
      {SERDAT_LEAK,       2,      0,    0,   5,   {{0, 4, 0x00000101}, {4, 4, 3}, {8, 4, 3}, {12, 4, 6}}},
      {SERDAT_AIRC,       0,      0,    0,   60,  {}},  // a standard reply, of which too little is read
      {SERDAT_ELEC_Y,     2000,   0,    0,   41,  {{0, 4, 2033u << 16 | 2034u}, {36, 4, 20300}, {92, 4, 2018}}},
      {SERDAT_EMERSON,    3000,   0,    109, 158, {{2, 1, 1}, {3, 1, 0}, {110, 1, 1}, {0, 2, 3100}, {291, 2, 3157}}},
      {SERDAT_DUAL_PROTO, 14418,  1013, 1,   1383, {{66, 2, 1}, {0, 2, 200}}},  // 41 A0 41 A1 is 20.03
  };
  // clang-format on
  for (const auto& [kind, base, first, bits, registers, record] : cases) {
    const LibmodbusSlave slave(base, first, bits, registers);
    MapDevice(L"ESL1:", slave.Path());
    CSerBase port(SER_ESL1);
    port.SetBaud(115200);
    port.SetTimeout(0, 300);
    EXPECT_EQ(port.Open(nullptr), 1);
    const std::unique_ptr<CSensorBase> driver(MakeDriver(kind));
    ASSERT_EQ(driver->GetData(&port, kDevice), record.empty() ? 0 : 1) << kind;
    port.Close();
    for (const auto& [position, bytes, number] : record) {
      std::uint32_t found = 0;
      for (int i = bytes; i-- > 0;) found = found << 8 | driver->m_pData[position + i];
      EXPECT_EQ(found, number) << kind << ", position " << position;
    }
  }
}

}  // namespace
}  // namespace fieldline::test
