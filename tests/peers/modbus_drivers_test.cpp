// The Modbus drivers against a slave built on libmodbus, over a real line.

#include <gtest/gtest.h>

#include <bit>
#include <utility>
#include <vector>

#include "fieldline/fieldline.h"
#include "tests/peers/libmodbus_slave.h"

namespace fieldline::test {
namespace {

constexpr int kDevice = 5;

class LibmodbusPeer : public testing::Test {
 protected:
  void TearDown() override {
    port_.Close();
    CSensorFactory::FreeInstance();
  }

  // Polls the slave with the driver of a kind.
  int Poll(LibmodbusSlave& slave, ENUM_SERDATKIND kind, int addr = kDevice) {
    slave.Start();
    MapDevice(L"ESL1:", slave.Path().c_str());
    port_.SetBaud(115200);
    port_.SetTimeout(0, 500);
    EXPECT_EQ(port_.Open(nullptr), 1);
    driver_ = CSensorFactory::GetInstance()->GetSensor(kind);
    return driver_->GetData(&port_, addr);
  }

  // Of the record, as it lies there: `bytes` from `position` on.
  std::uint32_t At(int position, int bytes) const {
    std::uint32_t number = 0;
    for (int i = bytes; i-- > 0;) number = number << 8 | driver_->m_pData[position + i];
    return number;
  }

  CSerBase port_{SER_ESL1};
  CSensorBase* driver_ = nullptr;
};

// Register k of the slave holds a base and k.
TEST_F(LibmodbusPeer, AnswersFromTheRegistersThatAreAsked) {
  struct Part {
    int position;
    int bytes;
    std::uint32_t number;
  };
  // clang-format off
  const struct {
    ENUM_SERDATKIND kind;
    LibmodbusSlave::Map map;
    int base;
    std::vector<Part> record;
  } cases[] = {
      {SERDAT_ENVIR, {.holding_registers = {0, 1}}, 0xFED0, {{0, 4, 0xFED1}, {4, 4, 0xFED0}}},
      {SERDAT_ELEC, {.holding_registers = {0, 56}}, 1000,
       {{0, 4, 1000u << 16 | 1001u}, {4, 4, 10340}, {80, 4, 1053}, {92, 4, 1056 * 25}}},
      {SERDAT_ELEC_Y, {.holding_registers = {0, 40}}, 2000,
       {{0, 4, 2033u << 16 | 2034u}, {36, 4, 20300}, {68, 4, 2026}, {92, 4, 2018}}},
      {SERDAT_EMERSON, {.inputs = {0, 108}, .input_registers = {0, 157}}, 3000,
       {{10, 1, 0}, {11, 1, 1}, {12, 1, 0}, {110, 1, 1}, {0, 2, 3100}, {159, 2, 3032}, {189, 2, 3069}, {291, 2, 3157}}},
  };
  // clang-format on
  for (const auto& [kind, map, base, record] : cases) {
    LibmodbusSlave slave(kDevice, map);
    modbus_mapping_t& memory = slave.map();
    for (int k = 0; k < memory.nb_registers; ++k) memory.tab_registers[k] = static_cast<WORD>(base + k);
    for (int k = 0; k < memory.nb_input_registers; ++k) memory.tab_input_registers[k] = static_cast<WORD>(base + k);
    if (kind == SERDAT_EMERSON) memory.tab_input_bits[9] = memory.tab_input_bits[108] = 1;
    ASSERT_EQ(Poll(slave, kind), 1) << kind;
    for (const auto& [position, bytes, number] : record) {
      EXPECT_EQ(At(position, bytes), number) << kind << ", position " << position;
    }
  }
}

TEST_F(LibmodbusPeer, AnExceptionFailsThePoll) {
  LibmodbusSlave slave(kDevice, {
                                    .holding_registers = {0, 0}
  });
  EXPECT_EQ(Poll(slave, SERDAT_ENVIR), 0);
}

TEST_F(LibmodbusPeer, Leak) {
  LibmodbusSlave slave(kDevice, {
                                    .holding_registers = {0, 1},
                                      .input_registers = {0, 4}
  });
  slave.map().tab_input_registers[0] = 0x0002;
  slave.map().tab_input_registers[1] = 1234;
  slave.map().tab_input_registers[4] = 4321;
  slave.map().tab_registers[1] = 777;
  ASSERT_EQ(Poll(slave, SERDAT_LEAK), 1);
  EXPECT_EQ(At(0, 4), 0x00000101u) << "status read, leak";
  EXPECT_EQ(At(4, 4), 1234u);
  EXPECT_EQ(At(8, 4), 777u);
  EXPECT_EQ(At(12, 4), 4321u);
}

TEST_F(LibmodbusPeer, AircTakesAShortReplyAndRefusesAStandardOne) {
  LibmodbusSlave standard(kDevice, {
                                       .input_registers = {0, 59}
  });
  EXPECT_EQ(Poll(standard, SERDAT_AIRC), 0) << "125 bytes, of which 100 are read";

  // 26 registers for the 60 asked for, each low byte first.
  Bytes reply{kDevice, 4, 52};
  for (BYTE k = 0; k < 26; ++k) reply.insert(reply.end(), {k, 0x10});
  LibmodbusSlave slave(kDevice, {});
  slave.AnswerWith(reply);
  ASSERT_EQ(Poll(slave, SERDAT_AIRC), 1);
  EXPECT_EQ(At(0, 2), 0x1000u);
  EXPECT_EQ(At(26, 2), 0x1013u);
  EXPECT_EQ(At(30, 2), 0x1019u);
}

TEST_F(LibmodbusPeer, DualProto) {
  LibmodbusSlave slave(4, {
                              .coils = {1013, 1013},
                                .holding_registers = {2348, 2395}
  });
  for (const auto& [reg, value] : {
           std::pair{2348, 220.5f  },
           {2350, -3.25f  },
           {2352, 50.75f  },
           {2356, -7.9f   },
           {2382, -6.5f   },
           {2394, 1234.56f}
  }) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    slave.map().tab_registers[reg - 2348] = static_cast<WORD>(bits >> 16);
    slave.map().tab_registers[reg - 2347] = static_cast<WORD>(bits & 0xFFFF);
  }
  slave.map().tab_bits[0] = 1;
  ASSERT_EQ(Poll(slave, SERDAT_DUAL_PROTO, 4), 1);
  const std::pair<int, std::uint32_t> record[] = {
      {26, 2205  },
      {14, 0xFFFD},
      {28, 50    },
      {16, 0xFFF9},
      {0,  0xFFBF},
      {12, 12345 },
      {66, 1     }
  };
  for (const auto& [position, number] : record) EXPECT_EQ(At(position, 2), number) << position;
}

}  // namespace
}  // namespace fieldline::test
