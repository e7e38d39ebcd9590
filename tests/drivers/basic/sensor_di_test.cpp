#include "fieldline/drivers/basic/sensor_di.h"

#include <gtest/gtest.h>

#include "fieldline/platform/device_name.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"

namespace fieldline::test {
namespace {

TEST(SensorDi, KeepsEachBitInItsPlaceAndTheRecordOnFailure) {
  TempDirectory directory;
  const std::string device = directory.Path("eio1");
  ASSERT_EQ(MapDevice(L"EIO1:", device.c_str()), 1);
  CSensorDi driver;
  const auto record = [&] { return ToHex({driver.m_pData, driver.m_pData + 8}); };

  directory.WriteFile("eio1", "\x81");
  EXPECT_EQ(driver.GetData(nullptr, 0), 1);
  EXPECT_EQ(record(), "01 00 00 00 00 00 00 80");

  directory.WriteFile("eio1", "");
  EXPECT_EQ(driver.GetData(nullptr, 0), 0) << "no byte";
  MapDevice(L"EIO1:", directory.Path("gone").c_str());
  EXPECT_EQ(driver.GetData(nullptr, 0), 0) << "no device";
  EXPECT_EQ(record(), "01 00 00 00 00 00 00 80");
  EXPECT_EQ(driver.m_hDev, -1);

  MapDevice(L"EIO1:", device.c_str());
  directory.WriteFile("eio1", std::string(1, '\0'));
  EXPECT_EQ(driver.GetData(nullptr, 0), 1);
  EXPECT_EQ(record(), "00 00 00 00 00 00 00 00");
  MapDevice(L"EIO1:", nullptr);
}

}  // namespace
}  // namespace fieldline::test
