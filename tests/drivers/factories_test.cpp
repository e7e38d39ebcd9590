#include <gtest/gtest.h>

#include <algorithm>

#include "fieldline/alarm/alarm_link.h"
#include "fieldline/fieldline.h"

namespace fieldline::test {
namespace {

class Factories : public testing::Test {
 protected:
  void TearDown() override {
    CSensorFactory::FreeInstance();
    CHubSerFactory::FreeInstance();
    CHubAlarm::FreeInstance();
    CHubMonitor::FreeInstance();
  }
};

TEST_F(Factories, GiveOnePortAType) {
  CHubSerFactory* factory = CHubSerFactory::GetInstance();
  EXPECT_EQ(CHubSerFactory::GetInstance(), factory);
  ISerBase* ports[11] = {};
  for (int type = 1; type <= 10; ++type) {
    ports[type] = factory->GetHubSer(static_cast<ENUM_SERTYPE>(type));
    ASSERT_NE(ports[type], nullptr) << type;
    EXPECT_EQ(ports[type]->GetSerType(), type);
    EXPECT_EQ(ports[type]->IsOpened(), 0);
    EXPECT_EQ(std::count(ports, ports + type, ports[type]), 0);
  }
  for (int type = 1; type <= 10; ++type) {
    EXPECT_EQ(factory->GetHubSer(static_cast<ENUM_SERTYPE>(type)), ports[type]);
  }
  for (const int type : {-1, 0, 11}) EXPECT_EQ(factory->GetHubSer(static_cast<ENUM_SERTYPE>(type)), nullptr) << type;
}

TEST_F(Factories, StartAfreshAfterTheirRelease) {
  CHubSerFactory::GetInstance()->GetHubSer(SER_ESL3)->SetBaud(9600);
  CHubSerFactory::FreeInstance();
  CHubSerFactory::FreeInstance();
  const auto* port = static_cast<CSerBase*>(CHubSerFactory::GetInstance()->GetHubSer(SER_ESL3));
  EXPECT_EQ(port->m_nBaud, 2400);

  auto* probe = static_cast<CSensorEnvir*>(CSensorFactory::GetInstance()->GetSensor(SERDAT_ENVIR));
  probe->m_data.register_0 = 7;
  CSensorFactory::FreeInstance();
  CSensorFactory::FreeInstance();
  probe = static_cast<CSensorEnvir*>(CSensorFactory::GetInstance()->GetSensor(SERDAT_ENVIR));
  EXPECT_EQ(probe->m_data.register_0, 0u);
}

TEST_F(Factories, GiveOneDriverAKind) {
  CSensorFactory* factory = CSensorFactory::GetInstance();
  for (const int kind : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 16, 17, 18, 19}) {
    CSensorBase* driver = factory->GetSensor(static_cast<ENUM_SERDATKIND>(kind));
    ASSERT_NE(driver, nullptr) << kind;
    EXPECT_EQ(driver->GetKind(), kind);
    EXPECT_EQ(factory->GetSensor(static_cast<ENUM_SERDATKIND>(kind)), driver);
    EXPECT_EQ(driver->m_pData == nullptr, kind == SERDAT_MONITOR || kind == SERDAT_ALARM) << kind;
  }
  for (const int kind : {-1, 0, 13, 14, 15, 20}) {
    EXPECT_EQ(factory->GetSensor(static_cast<ENUM_SERDATKIND>(kind)), nullptr) << kind;
  }
}

// In every order of release: nothing is destroyed twice, which the address sanitizer would tell, and nothing destroyed
// is handed out.
TEST_F(Factories, LeaveTheSingletonsToThemselves) {
  void (*const releases[])() = {CSensorFactory::FreeInstance, CHubAlarm::FreeInstance, CHubMonitor::FreeInstance};
  int order[] = {0, 1, 2};
  do {
    EXPECT_EQ(CSensorFactory::GetInstance()->GetSensor(SERDAT_ALARM), CHubAlarm::GetInstance());
    EXPECT_EQ(CSensorFactory::GetInstance()->GetSensor(SERDAT_MONITOR), CHubMonitor::GetInstance());
    for (const int i : order) {
      releases[i]();
      CSensorBase* alarm = CSensorFactory::GetInstance()->GetSensor(SERDAT_ALARM);
      ASSERT_EQ(alarm, CHubAlarm::GetInstance());
      EXPECT_EQ(alarm->GetData(nullptr, 0), 0);
      CSensorBase* monitor = CSensorFactory::GetInstance()->GetSensor(SERDAT_MONITOR);
      ASSERT_EQ(monitor, CHubMonitor::GetInstance());
      EXPECT_EQ(monitor->GetData(nullptr, 0), 0);
    }
    for (const auto release : releases) release();
  } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST_F(Factories, ASingletonMayBeDeletedThroughItsBase) {
  CSensorFactory* factory = CSensorFactory::GetInstance();
  delete factory->GetSensor(SERDAT_ALARM);
  delete factory->GetSensor(SERDAT_MONITOR);
  CHubAlarm::FreeInstance();
  CHubMonitor::FreeInstance();
  EXPECT_FALSE(CHubAlarm::GetInstance()->IsReady());

  CSensorBase* copy = new CHubAlarm(*CHubAlarm::GetInstance());
  delete copy;
  EXPECT_EQ(factory->GetSensor(SERDAT_ALARM)->GetKind(), SERDAT_ALARM) << "a copy is not the one object";
}

// Three lives for every order of release. The address sanitizer tells of a port that is used after it was destroyed.
TEST_F(Factories, APortThatIsDestroyedIsHeldByNobody) {
  void (*const releases[])() = {CHubSerFactory::FreeInstance, CSensorFactory::FreeInstance, CHubAlarm::FreeInstance,
                                CHubMonitor::FreeInstance};
  int order[] = {0, 1, 2, 3};
  do {
    for (int life = 0; life < 3; ++life) {
      ISerBase* board_port = CHubSerFactory::GetInstance()->GetHubSer(SER_COM);
      ISerBase* display_port = CHubSerFactory::GetInstance()->GetHubSer(SER_TEST);
      CHubAlarm* alarm = CHubAlarm::GetInstance();
      alarm->InitHandler(board_port);
      CHubMonitor::GetInstance()->InitHandler(display_port);
      board_port->Close();
      display_port->Close();
      for (const int i : order) {
        releases[i]();
        if (releases[i] != CHubSerFactory::FreeInstance) continue;
        EXPECT_EQ(alm_link_ops.port, nullptr);
        EXPECT_EQ(CHubMonitor::m_pHandler, nullptr);
        EXPECT_EQ(CHubAlarm::GetInstance()->m_pPort, nullptr);
        EXPECT_FALSE(CHubAlarm::GetInstance()->IsReady());
        EXPECT_EQ(CHubAlarm::GetInstance()->Alm_ctrl_init(), 0);
        EXPECT_EQ(CHubAlarm::GetInstance()->Alm_reset_gsm(), 1);
        EXPECT_EQ(CHubMonitor::GetInstance()->diwen_init(), 0u);
      }
    }
  } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST_F(Factories, APortOfTheApplicationStaysInstalled) {
  CHubSerFactory::GetInstance()->GetHubSer(SER_COM);
  CSerBase own;
  CHubAlarm::GetInstance()->InitHandler(&own);
  CHubMonitor::InitHandler(&own);
  CHubSerFactory::FreeInstance();
  EXPECT_EQ(alm_link_ops.port, &own);
  EXPECT_EQ(CHubAlarm::GetInstance()->m_pPort, &own);
  EXPECT_EQ(CHubMonitor::m_pHandler, &own);
  CHubAlarm::GetInstance()->InitHandler(nullptr);
  CHubMonitor::InitHandler(nullptr);
}

}  // namespace
}  // namespace fieldline::test
