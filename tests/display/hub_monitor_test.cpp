#include "fieldline/display/hub_monitor.h"

#include <gtest/gtest.h>

#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

class HubMonitorTest : public testing::Test {
 protected:
  ~HubMonitorTest() override {
    CHubMonitor::InitHandler(nullptr);
    CHubMonitor::FreeInstance();
  }

  struct Operation {
    unsigned long (*run)(CHubMonitor* monitor);
    const char* frame;
  };
  static constexpr Operation kOperations[] = {
      {[](CHubMonitor* monitor) { return monitor->diwen_set_data(0x1000, 0x0102); }, "A5 5A 05 82 10 00 01 02"               },
      {[](CHubMonitor* monitor) { return monitor->diwen_set_data(0xFEDC, 0xBA98); }, "A5 5A 05 82 FE DC BA 98"               },
      {[](CHubMonitor* monitor) { return monitor->diwen_set_display(3); },           "A5 5A 04 80 03 00 03"                  },
      {[](CHubMonitor* monitor) { return monitor->diwen_set_display(0x0201); },      "A5 5A 04 80 03 02 01"                  },
      {[](CHubMonitor* monitor) {
         return monitor->diwen_set_rtc({0x24, 0x05, 0x17, 0x05, 0x13, 0x45, 0x00});
       },                                                                     "A5 5A 0A 80 1F 5A 24 05 17 05 13 45 00"},
  };

  ScriptedPort port_;
  CHubMonitor* monitor_ = CHubMonitor::GetInstance();
};

TEST_F(HubMonitorTest, EachOperationIsOneWrite) {
  monitor_->InitHandler(&port_);
  for (const Operation& operation : kOperations) {
    const Bytes frame = Hex(operation.frame);
    const int length = static_cast<int>(frame.size());
    port_.calls.clear();
    port_.Expect(frame);
    EXPECT_EQ(operation.run(monitor_), 1u) << operation.frame;
    port_.ExpectButReport(frame, length - 1).ExpectButReport(frame, -1);
    EXPECT_EQ(operation.run(monitor_), 0u) << operation.frame;
    EXPECT_EQ(operation.run(monitor_), 0u) << operation.frame;
    EXPECT_EQ(port_.calls, "www");
  }
}

TEST_F(HubMonitorTest, SendsNothingWithoutAnOpenPort) {
  port_.open = 0;
  EXPECT_EQ(monitor_->diwen_init(), 0u);
  for (const Operation& operation : kOperations) EXPECT_EQ(operation.run(monitor_), 0u);
  monitor_->InitHandler(&port_);
  for (const Operation& operation : kOperations) EXPECT_EQ(operation.run(monitor_), 0u);
  EXPECT_EQ(port_.calls, "");

  port_.can_open = 0;
  EXPECT_EQ(monitor_->diwen_init(), 1u) << "whether the port opens or not";
  EXPECT_EQ(monitor_->diwen_set_display(3), 0u);
  port_.can_open = 1;
  EXPECT_EQ(monitor_->diwen_init(), 1u);
  port_.Expect(Hex("A5 5A 04 80 03 00 03"));
  EXPECT_EQ(monitor_->diwen_set_display(3), 1u);

  EXPECT_EQ(monitor_->GetKind(), SERDAT_MONITOR);
  EXPECT_EQ(monitor_->m_pData, nullptr);
  EXPECT_EQ(monitor_->GetData(&port_, 1), 0);
  EXPECT_EQ(port_.calls, "oow");
}

TEST_F(HubMonitorTest, ThePortOutlivesTheObject) {
  monitor_->InitHandler(&port_);
  CHubMonitor::FreeInstance();
  CHubMonitor::FreeInstance();
  monitor_ = CHubMonitor::GetInstance();
  port_.Expect(Hex("A5 5A 04 80 03 00 03"));
  EXPECT_EQ(monitor_->diwen_set_display(3), 1u);

  monitor_->InitHandler(&port_);
  EXPECT_EQ(port_.open, 0) << "a port that is installed anew is closed";
  port_.open = 1;
  ScriptedPort other;
  monitor_->InitHandler(&other);
  EXPECT_EQ(port_.open, 0);
  EXPECT_EQ(other.calls, "");
  monitor_->InitHandler(nullptr);
  EXPECT_EQ(other.open, 0);
  EXPECT_EQ(monitor_->diwen_init(), 0u);
  EXPECT_EQ(monitor_->diwen_set_display(3), 0u);
}

}  // namespace
}  // namespace fieldline::test
