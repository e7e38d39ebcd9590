#include "fieldline/drivers/basic/sensor_di.h"

#include "fieldline/platform/device_name.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"

namespace fieldline::test {
namespace {

TEST(SensorDi, KeepsEachBitInItsPlaceAndTheRecordOnFailure) {
  const TempDirectory directory;
  MapDevice(L"EIO1:", directory.Path("eio1").c_str());
  CSensorDi driver;
  const auto expect_poll = [&](const std::string& content, int result, const char* record) {
    directory.WriteFile("eio1", content);
    EXPECT_EQ(driver.GetData(nullptr, 0), result) << record;
    EXPECT_EQ(ToHex({driver.m_pData, driver.m_pData + 8}), record);
  };
  expect_poll("\x81", 1, "01 00 00 00 00 00 00 80");
  expect_poll("", 0, "01 00 00 00 00 00 00 80");
  expect_poll("\x7E", 1, "00 02 04 08 10 20 40 00");
  EXPECT_EQ(driver.m_hDev, -1);
  MapDevice(L"EIO1:", nullptr);
}

}  // namespace
}  // namespace fieldline::test
