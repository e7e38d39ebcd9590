// The Modbus drivers against a slave built on libmodbus, over a real line.

#include <gtest/gtest.h>

#include <bit>

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

  template <class Driver>
  auto& Record() {
    return static_cast<Driver*>(driver_)->m_data;
  }

  CSerBase port_{SER_ESL1};
  CSensorBase* driver_ = nullptr;
};

TEST_F(LibmodbusPeer, Envir) {
  LibmodbusSlave slave(kDevice, {
                                    .holding_registers = {0, 1}
  });
  slave.map().tab_registers[0] = 0x0123;
  slave.map().tab_registers[1] = 0xFEDC;
  ASSERT_EQ(Poll(slave, SERDAT_ENVIR), 1);
  EXPECT_EQ(Record<CSensorEnvir>().register_0, 0x0123u);
  EXPECT_EQ(Record<CSensorEnvir>().register_1, 0xFEDCu);
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
  EXPECT_EQ(Record<CSensorLeak>().leak, 1);
  EXPECT_EQ(Record<CSensorLeak>().second_flag, 0);
  EXPECT_EQ(Record<CSensorLeak>().input_register_1, 1234u);
  EXPECT_EQ(Record<CSensorLeak>().holding_register_1, 777u);
  EXPECT_EQ(Record<CSensorLeak>().input_register_4, 4321u);
}

TEST_F(LibmodbusPeer, Elec) {
  LibmodbusSlave slave(kDevice, {
                                    .holding_registers = {0, 56}
  });
  for (WORD k = 0; k < 57; ++k) slave.map().tab_registers[k] = static_cast<WORD>(1000 + k);
  ASSERT_EQ(Poll(slave, SERDAT_ELEC), 1);
  EXPECT_EQ(Record<CSensorElec>().counter, 1000u << 16 | 1001u);
  EXPECT_EQ(Record<CSensorElec>().q1_total, 10340u);
  EXPECT_EQ(Record<CSensorElec>().q5_phase3, 1053u);
  EXPECT_EQ(Record<CSensorElec>().q6_phase3, 1056u * 25);
}

TEST_F(LibmodbusPeer, ElecY) {
  LibmodbusSlave slave(kDevice, {
                                    .holding_registers = {0, 40}
  });
  for (WORD k = 0; k < 41; ++k) slave.map().tab_registers[k] = static_cast<WORD>(2000 + k);
  ASSERT_EQ(Poll(slave, SERDAT_ELEC_Y), 1);
  EXPECT_EQ(Record<CSensorElecY>().counter, 2033u << 16 | 2034u);
  EXPECT_EQ(Record<CSensorElecY>().q3_total, 20300u);
  EXPECT_EQ(Record<CSensorElecY>().single, 2026u);
  EXPECT_EQ(Record<CSensorElecY>().q6_phase3, 2018u);
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
  EXPECT_EQ(Record<CSensorAirc>().first.register_0, 0x1000);
  EXPECT_EQ(Record<CSensorAirc>().second.register_7, 0x1013);
  EXPECT_EQ(Record<CSensorAirc>().register_25, 0x1019);
}

TEST_F(LibmodbusPeer, Emerson) {
  LibmodbusSlave slave(kDevice, {
                                    .inputs = {0, 108},
                                      .input_registers = {0, 157}
  });
  slave.map().tab_input_bits[9] = slave.map().tab_input_bits[108] = 1;
  for (WORD k = 0; k < 158; ++k) slave.map().tab_input_registers[k] = static_cast<WORD>(3000 + k);
  ASSERT_EQ(Poll(slave, SERDAT_EMERSON), 1);
  const EMERSON_DATA& record = Record<CSensorEmerson>();
  EXPECT_EQ(record.inputs[8] + record.inputs[10], 0);
  EXPECT_EQ(record.inputs[9] + record.inputs[108], 2);
  EXPECT_EQ(WORD{record.register_100}, 3100);
  EXPECT_EQ(WORD{record.registers_8_to_32[24]}, 3032);
  EXPECT_EQ(WORD{record.registers_69_to_78[0]}, 3069);
  EXPECT_EQ(WORD{record.registers_114_to_119[5]}, 3119);
  EXPECT_EQ(WORD{record.registers_140_to_157[17]}, 3157);
}

TEST_F(LibmodbusPeer, DualProto) {
  LibmodbusSlave slave(4, {
                              .coils = {1013, 1013},
                                .holding_registers = {2348, 2395}
  });
  const auto set = [&](int reg, float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    slave.map().tab_registers[reg - 2348] = static_cast<WORD>(bits >> 16);
    slave.map().tab_registers[reg - 2347] = static_cast<WORD>(bits & 0xFFFF);
  };
  set(2348, 220.5f);
  set(2350, -3.25f);
  set(2352, 50.75f);
  set(2356, -7.9f);
  set(2382, -6.5f);
  set(2394, 1234.56f);
  slave.map().tab_bits[0] = 1;
  ASSERT_EQ(Poll(slave, SERDAT_DUAL_PROTO, 4), 1);
  const auto value = [&](int position) { return driver_->m_pData[position] | driver_->m_pData[position + 1] << 8; };
  EXPECT_EQ(value(26), 2205);
  EXPECT_EQ(value(14), 0xFFFD);
  EXPECT_EQ(value(28), 50);
  EXPECT_EQ(value(16), 0xFFF9);
  EXPECT_EQ(value(0), 0xFFBF);
  EXPECT_EQ(value(12), 12345);
  EXPECT_EQ(value(66), 1);
}

}  // namespace
}  // namespace fieldline::test
