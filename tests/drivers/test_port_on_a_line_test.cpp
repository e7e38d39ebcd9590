#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "fieldline/fieldline.h"
#include "sim/catalog.h"
#include "sim/line.h"
#include "tests/support/flash_images.h"

namespace fieldline::test {
namespace {

// One line with a device of each kind whose record the test port keeps.
TEST(TestPortOnALine, PollsEveryKind) {
  auto* port = static_cast<CHubSerTest*>(CHubSerFactory::GetInstance()->GetHubSer(SER_TEST));
  struct {
    const char* device;
    ENUM_SERDATKIND kind;
    BYTE address;
    const void* copy;
    std::size_t size;
    const char* name;  // of a value that is set
    const char* value;
  } const polled[] = {
      {"elec",    SERDAT_ELEC,    1, &port->m_datElec,    96,  "q1_total",      "100" },
      {"onoff",   SERDAT_ONOFF,   2, &port->m_datOnoff,   12,  "input_1",       "1"   },
      {"ups",     SERDAT_UPS,     0, &port->m_datUps,     245, "input_voltage", "220" },
      {"battery", SERDAT_BATTERY, 3, &port->m_datBattery, 84,  "cell_1",        "2"   },
      {"envir",   SERDAT_ENVIR,   4, &port->m_datEnvir,   8,   "humidity",      "50"  },
      {"leak",    SERDAT_LEAK,    5, &port->m_datLeak,    16,  "leak",          "1"   },
      {"airc",    SERDAT_AIRC,    6, &port->m_datAirc,    32,  "register_0",    "4660"},
      {"camera",  SERDAT_CAMERA,  0, &port->m_datCamera,  52,  "size",          "1000"},
  };

  const FlashImages flash;
  sim::Line line({.baud = 115200});
  for (const auto& p : polled) {
    std::string error;
    EXPECT_TRUE(line.Add(sim::Make(p.device, p.address)).values().Set(p.name, p.value, &error)) << error;
  }
  ASSERT_TRUE(line.Start());
  ASSERT_EQ(MapDevice(L"COM6:", line.Path().c_str()), 1);
  port->SetBaud(115200);
  port->SetTimeout(2, 150);
  ASSERT_EQ(port->Open(nullptr), 1);
  for (const auto& p : polled) {
    EXPECT_EQ(port->GetData(p.kind, p.address), 1) << p.device;
    const BYTE* record = CSensorFactory::GetInstance()->GetSensor(p.kind)->m_pData;
    EXPECT_EQ(std::memcmp(p.copy, record, p.size), 0) << p.device;
  }
  EXPECT_EQ(port->m_datOnoff.inputs[0], 1);
  EXPECT_EQ(port->m_datUps.input_voltage, 2200);
  EXPECT_EQ(port->m_datBattery.cells[0], 2000);
  EXPECT_EQ(port->m_datLeak.leak, 1);
  EXPECT_EQ(port->m_datAirc.first.register_0, 4660);
  EXPECT_EQ(WORD{port->m_datCamera.length}, 1000);
  EXPECT_EQ(flash.Read("20240517134500.JPEG").size(), 1000u);

  port->Close();
  CHubSerFactory::FreeInstance();
  CSensorFactory::FreeInstance();
  MapDevice(L"COM6:", nullptr);
}

}  // namespace
}  // namespace fieldline::test
