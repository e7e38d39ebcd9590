// Modbus drivers against a slave that this project did not write, built on libmodbus, over a real line.

#include <cstdint>
#include <memory>
#include <vector>

#include "fieldline/fieldline.h"
#include "fieldline/sensor/make_driver.h"
#include "tests/peers/libmodbus_slave.h"

namespace fieldline::test {
namespace {

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
