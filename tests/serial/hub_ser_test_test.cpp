#include "fieldline/serial/hub_ser_test.h"

#include "fieldline/platform/device_name.h"
#include "fieldline/platform/pseudo_terminal.h"
#include "fieldline/sensor/sensor_factory.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"

namespace fieldline::test {
namespace {

class HubSerTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(far_.Open());
    ASSERT_EQ(MapDevice(L"COM6:", far_.Path()), 1);
    port_ = static_cast<CHubSerTest*>(CHubSerFactory::GetInstance()->GetHubSer(SER_TEST));
    port_->SetTimeout(0, 0);
    ASSERT_EQ(port_->Open(nullptr), 1);
  }
  void TearDown() override {
    port_->Close();
    CHubSerFactory::FreeInstance();
    CSensorFactory::FreeInstance();
    MapDevice(L"COM6:", nullptr);
  }

  // Polls while `reply` lies ready on the line; yields what was sent.
  std::string Poll(int kind, const char* reply, int result) {
    const Bytes bytes = Hex(reply);
    far_.Write(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_EQ(port_->GetData(kind, 1), result);
    Bytes sent;
    for (BYTE byte; far_.Read(&byte, 1, 0) == 1;) sent.push_back(byte);
    return ToHex(sent);
  }

  std::string Copies() const {
    const BYTE* first = reinterpret_cast<const BYTE*>(&port_->m_datEnvir);
    return ToHex({first, first + 545});
  }

  PseudoTerminal far_;
  CHubSerTest* port_;
};

TEST_F(HubSerTest, KeepsTheRecordOfEachPollThatSucceeded) {
  std::string copies = ToHex(Bytes(545));
  EXPECT_EQ(Copies(), copies);

  EXPECT_EQ(Poll(SERDAT_ENVIR, "01 03 04 01 23 FE DC 4B FC", 1), "01 03 00 00 00 02 C4 0B");
  copies.replace(0, 8 * 3 - 1, "DC FE 00 00 23 01 00 00");
  EXPECT_EQ(Copies(), copies);

  Poll(SERDAT_ENVIR, "01 03 04 01 23 FE DC 4B FD", 0);
  EXPECT_EQ(Copies(), copies) << "damaged";

  EXPECT_EQ(Poll(SERDAT_ONOFF, "01 04 0C 01 00 00 01 00 00 00 00 00 00 00 01 A4 24", 1), "01 04 00 00 00 0C F0 0F");
  copies.replace(120 * 3, 12 * 3 - 1, "01 00 00 01 00 00 00 00 00 00 00 01");
  EXPECT_EQ(Copies(), copies);

  EXPECT_EQ(Poll(SERDAT_LEAK, "01 04 02 00 0C B9 35", 0), "01 04 00 00 00 01 31 CA 01 03 00 01 00 01 D5 CA");
  EXPECT_EQ(CSensorFactory::GetInstance()->GetSensor(SERDAT_LEAK)->m_pData[2], 1) << "of the driver's own record";
  EXPECT_EQ(Copies(), copies) << "half a poll";

  port_->Close();
  EXPECT_EQ(port_->GetData(SERDAT_ONOFF, 1), 0);
  EXPECT_EQ(Copies(), copies) << "closed";
}

TEST_F(HubSerTest, CopiesNothingForOtherKinds) {
  for (const int kind : {-1, 0, 10, 11, 13, 14, 15, 1000}) EXPECT_EQ(Poll(kind, "", 0), "") << kind;

  const TempDirectory directory;
  directory.WriteFile("eio1", "\xFF");
  MapDevice(L"EIO1:", directory.Path("eio1").c_str());
  EXPECT_EQ(Poll(SERDAT_DI, "", 1), "");
  MapDevice(L"EIO1:", nullptr);
  EXPECT_EQ(Copies(), ToHex(Bytes(545)));
}

}  // namespace
}  // namespace fieldline::test
