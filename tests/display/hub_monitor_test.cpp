#include "fieldline/display/hub_monitor.h"

#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

class HubMonitorTest : public testing::Test {
 protected:
  ~HubMonitorTest() override {
    CHubMonitor::InitHandler(nullptr);
    CHubMonitor::FreeInstance();
  }

  const Bytes page_3_ = Hex("A5 5A 04 80 03 00 03");
  ScriptedPort port_;
  CHubMonitor* monitor_ = CHubMonitor::GetInstance();
};

TEST_F(HubMonitorTest, EachOperationIsOneWriteOnAnOpenPort) {
  const DIWEN_RTC_DATA time = {0x24, 0x05, 0x17, 0x06, 0x13, 0x45, 0x01};
  const std::pair<std::function<unsigned long()>, const char*> operations[] = {
      {[&] { return monitor_->diwen_set_data(0xFEDC, 0xBA98); }, "A5 5A 05 82 FE DC BA 98"               },
      {[&] { return monitor_->diwen_set_display(0x0201); },      "A5 5A 04 80 03 02 01"                  },
      {[&] { return monitor_->diwen_set_rtc(time); },            "A5 5A 0A 80 1F 5A 24 05 17 06 13 45 01"},
  };
  for (const auto& [run, frame] : operations) {
    const Bytes bytes = Hex(frame);
    monitor_->InitHandler(nullptr);
    EXPECT_EQ(run(), 0u) << frame;
    monitor_->InitHandler(&port_);
    port_.open = 0;
    EXPECT_EQ(run(), 0u) << frame;
    port_.open = 1;
    port_.calls.clear();
    port_.Expect(bytes).ExpectButReport(bytes, static_cast<int>(bytes.size()) - 1).ExpectButReport(bytes, -1);
    EXPECT_EQ(run(), 1u) << frame;
    EXPECT_EQ(run(), 0u) << frame;
    EXPECT_EQ(run(), 0u) << frame;
    EXPECT_EQ(port_.calls, "www");
  }
}

TEST_F(HubMonitorTest, OpensThePortThatIsInstalled) {
  EXPECT_EQ(monitor_->diwen_init(), 0u);
  port_.open = port_.can_open = 0;
  monitor_->InitHandler(&port_);
  EXPECT_EQ(monitor_->diwen_init(), 1u) << "whether the port opens or not";
  EXPECT_EQ(monitor_->diwen_set_display(3), 0u);
  port_.can_open = 1;
  EXPECT_EQ(monitor_->diwen_init(), 1u);
  port_.Expect(page_3_);
  EXPECT_EQ(monitor_->diwen_set_display(3), 1u);
  EXPECT_EQ(monitor_->GetData(&port_, 1), 0);
  EXPECT_EQ(port_.calls, "oow");
}

TEST_F(HubMonitorTest, ThePortOutlivesTheObject) {
  monitor_->InitHandler(&port_);
  CHubMonitor::FreeInstance();
  CHubMonitor::FreeInstance();
  monitor_ = CHubMonitor::GetInstance();
  port_.Expect(page_3_);
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
}

}  // namespace
}  // namespace fieldline::test
