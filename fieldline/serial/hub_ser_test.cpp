#include "fieldline/serial/hub_ser_test.h"

#include <cstddef>
#include <cstring>

#include "fieldline/sensor/sensor_factory.h"

// offsetof is not defined for a class with virtual functions, but the compilers lay out its members as usual.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#define FIELDLINE_DISTANCE(member) (offsetof(CHubSerTest, member) - offsetof(CHubSerTest, m_datEnvir))
static_assert(offsetof(CHubSerTest, m_datEnvir) == sizeof(CSerBase));
static_assert(FIELDLINE_DISTANCE(m_datLeak) == 8);
static_assert(FIELDLINE_DISTANCE(m_datElec) == 24);
static_assert(FIELDLINE_DISTANCE(m_datOnoff) == 120);
static_assert(FIELDLINE_DISTANCE(m_datBattery) == 132);
static_assert(FIELDLINE_DISTANCE(m_datAirc) == 216);
static_assert(FIELDLINE_DISTANCE(m_datUps) == 248);
static_assert(FIELDLINE_DISTANCE(m_datCamera) == 493);
#undef FIELDLINE_DISTANCE
#pragma GCC diagnostic pop

CHubSerTest::CHubSerTest() : CSerBase(SER_TEST) {}

int CHubSerTest::GetData(int kind, int addr) {
  CSensorFactory* const factory = CSensorFactory::GetInstance();
  if (!factory) return 0;
  CSensorBase* const driver = factory->GetSensor(static_cast<ENUM_SERDATKIND>(kind));
  if (!driver) return 0;
  if (!driver->GetData(this, addr)) return 0;

  const auto keep = [driver](auto& copy) { std::memcpy(&copy, driver->m_pData, sizeof copy); };
  switch (kind) {
    case SERDAT_ENVIR:
      keep(m_datEnvir);
      break;
    case SERDAT_LEAK:
      keep(m_datLeak);
      break;
    case SERDAT_ELEC:
      keep(m_datElec);
      break;
    case SERDAT_ONOFF:
      keep(m_datOnoff);
      break;
    case SERDAT_BATTERY:
      keep(m_datBattery);
      break;
    case SERDAT_AIRC:
      keep(m_datAirc);
      break;
    case SERDAT_UPS:
      keep(m_datUps);
      break;
    case SERDAT_CAMERA:
      keep(m_datCamera);
      break;
    default:
      break;
  }
  return 1;
}
