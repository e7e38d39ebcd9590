#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "fieldline/alarm/alarm_link.h"
#include "fieldline/fieldline.h"
#include "fieldline/kinds.h"

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

TEST_F(Factories, GiveOneObjectAKind) {
  std::set<const void*> given;
  CHubSerFactory* ports = CHubSerFactory::GetInstance();
  for (int type = -1; type <= 11; ++type) {
    ISerBase* port = ports->GetHubSer(static_cast<ENUM_SERTYPE>(type));
    ASSERT_EQ(port != nullptr, type >= SER_ESL1 && type <= SER_COM) << type;
    if (!port) continue;
    EXPECT_EQ(port->GetSerType(), type);
    EXPECT_EQ(port->IsOpened(), 0);
    EXPECT_TRUE(given.insert(port).second) << type;
    EXPECT_EQ(CHubSerFactory::GetInstance()->GetHubSer(static_cast<ENUM_SERTYPE>(type)), port) << type;
  }
  for (int number = -1; number <= 20; ++number) {
    const auto kind = static_cast<ENUM_SERDATKIND>(number);
    CSensorBase* driver = CSensorFactory::GetInstance()->GetSensor(kind);
    const bool is_kind = std::ranges::find(kKinds, kind, &Kind::number) != std::end(kKinds);
    ASSERT_EQ(driver != nullptr, is_kind && kind != SERDAT_CARD_K && kind != SERDAT_CAMERA_3GE) << number;
    if (!driver) continue;
    EXPECT_EQ(driver->GetKind(), number);
    EXPECT_EQ(CSensorFactory::GetInstance()->GetSensor(kind), driver) << number;
    EXPECT_EQ(driver->m_pData != nullptr, KindOf(kind).IsPolled()) << number;
  }
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

// In every order of release, three lives each: nothing is destroyed twice or used after that, which the address
// sanitizer would report, and nothing destroyed is handed out.
TEST_F(Factories, LeaveTheSingletonsToThemselvesAndTheirPortsToNobody) {
  void (*const releases[])() = {CHubSerFactory::FreeInstance, CSensorFactory::FreeInstance, CHubAlarm::FreeInstance,
                                CHubMonitor::FreeInstance};
  int order[] = {0, 1, 2, 3};
  do {
    for (int life = 0; life < 3; ++life) {
      ISerBase* board_port = CHubSerFactory::GetInstance()->GetHubSer(SER_COM);
      ISerBase* display_port = CHubSerFactory::GetInstance()->GetHubSer(SER_TEST);
      CHubAlarm::GetInstance()->InitHandler(board_port);
      CHubMonitor::GetInstance()->InitHandler(display_port);
      board_port->Close();
      display_port->Close();
      for (const int i : order) {
        releases[i]();
        CSensorBase* alarm = CSensorFactory::GetInstance()->GetSensor(SERDAT_ALARM);
        CSensorBase* monitor = CSensorFactory::GetInstance()->GetSensor(SERDAT_MONITOR);
        ASSERT_EQ(alarm, CHubAlarm::GetInstance());
        ASSERT_EQ(monitor, CHubMonitor::GetInstance());
        EXPECT_EQ(alarm->GetData(nullptr, 0) + monitor->GetData(nullptr, 0), 0);
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
    for (const auto release : releases) release();
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

template <class Driver>
void ExpectCopiesAtTheirOwnRecord(std::size_t position) {
  Driver driver;
  ASSERT_EQ(driver.m_pData, reinterpret_cast<BYTE*>(&driver) + position);
  EXPECT_EQ(driver.m_pData[0] + driver.m_pData[7], 0) << "zero from construction on";
  driver.m_pData[7] = 7;
  Driver& itself = driver;
  driver = itself;
  const Driver copy(driver);
  Driver assigned;
  assigned = driver;
  static_cast<CSensorBase&>(assigned) = Driver();
  for (const Driver* twin : {&copy, const_cast<const Driver*>(&assigned)}) {
    EXPECT_EQ(twin->m_pData, reinterpret_cast<const BYTE*>(twin) + position);
    EXPECT_EQ(twin->m_pData[7], 7);
    EXPECT_EQ(twin->GetKind(), driver.GetKind());
  }
}

TEST(SensorBase, KeepsTheRecordBehindItAndACopyAtItsOwn) {
  ExpectCopiesAtTheirOwnRecord<CSensorEnvir>(sizeof(CSensorBase));
  ExpectCopiesAtTheirOwnRecord<CSensorCardK>(sizeof(CSensorBase) + sizeof(CSensorCardK::m_nCardLen));
  CSensorCardK card;
  card.m_nCardLen = 14;
  CSensorCardK assigned;
  assigned = card;
  EXPECT_EQ(assigned.m_nCardLen, 14u);
}

TEST(SensorBase, ShowsAndAllowsWhatApplicationsUse) {
  class Port : public CHubSerTest {};
  Port port;
  port.m_datEnvir.register_0 = 1;
  CSerBase ports[2] = {};
  CSensorBase sensors[2] = {};
  sensors[1].m_byReserved = sensors[1].m_abyReserved[99] = sensors[1].m_byCmd[31] = 2;
  sensors[0] = sensors[1];
  EXPECT_EQ(ports[1].m_nPort, 1);
  EXPECT_EQ(sensors[0].m_byReserved + sensors[0].m_abyReserved[99] + sensors[0].m_byCmd[31], 6);
  EXPECT_EQ(sensors[0].m_nFlags + sensors[0].m_eKind, 0);
  EXPECT_EQ(CSensorFactory::GetInstance()->m_arrSensor.size() + CHubSerFactory::GetInstance()->m_arrSer.size(), 0u);
}

}  // namespace
}  // namespace fieldline::test
