#include <gtest/gtest.h>

#include "fieldline/fieldline.h"
#include "tests/allocation/allocations.h"
#include "tests/support/fake_clock.h"
#include "tests/support/make_device.h"
#include "tests/support/temp_directory.h"

namespace fieldline::test {
namespace {

struct Polled {
  ENUM_SERDATKIND kind;
  const char* device;
  int addr;
};

// Every driver that the factory makes but the camera, which holds one picture during a poll.
constexpr Polled kPolled[] = {
    {SERDAT_ELEC,       "elec",       1},
    {SERDAT_ONOFF,      "onoff",      1},
    {SERDAT_UPS,        "ups",        1},
    {SERDAT_BATTERY,    "battery",    1},
    {SERDAT_ENVIR,      "envir",      1},
    {SERDAT_LEAK,       "leak",       1},
    {SERDAT_AIRC,       "airc",       1},
    {SERDAT_CYBERMATE,  "cybermate",  1},
    {SERDAT_EMERSON,    "emerson",    1},
    {SERDAT_DUAL_PROTO, "dual-proto", 4},
    {SERDAT_DUAL_PROTO, "dual-proto", 5},
    {SERDAT_POWER_UNIT, "power-unit", 1},
    {SERDAT_ELEC_Y,     "elec-y",     1},
};

// Result and number of allocations of one poll.
std::pair<int, int> CountedPoll(CSensorBase* driver, ISerBase* port, int addr) {
  Heap().made = 0;
  Heap().paused = false;
  const int result = driver->GetData(port, addr);
  Heap().paused = true;
  return {result, Heap().made};
}

TEST(Allocation, PollsMakeNone) {
  Clock().sleeps.reserve(100);
  for (const Polled& polled : kPolled) {
    auto device = MakeDevice(polled.device, polled.addr);
    ASSERT_NE(device, nullptr) << polled.device;
    UncountedDevicePort port(std::move(device));
    CSensorBase* driver = CSensorFactory::GetInstance()->GetSensor(polled.kind);
    ASSERT_NE(driver, nullptr) << polled.device;
    EXPECT_EQ(CountedPoll(driver, &port, polled.addr), std::pair(1, 0)) << polled.device;
  }

  UncountedDevicePort card_port(MakeDevice("card", 1));
  CSensorCardK card;
  EXPECT_EQ(CountedPoll(&card, &card_port, 1), std::pair(1, 0));

  const TempDirectory directory;
  directory.WriteFile("eio1", "\x81");
  MapDevice(L"EIO1:", directory.Path("eio1").c_str());
  EXPECT_EQ(CountedPoll(CSensorFactory::GetInstance()->GetSensor(SERDAT_DI), nullptr, 0), std::pair(1, 0));
  MapDevice(L"EIO1:", nullptr);
  CSensorFactory::FreeInstance();
}

// Runs `call` while no allocation succeeds.
template <class Call>
auto WithoutMemory(Call call) {
  Heap().fail = true;
  Heap().paused = false;
  const auto result = call();
  Heap().paused = true;
  Heap().fail = false;
  return result;
}

class Observer : public ISerObserver {
  void OnSerRead(const BYTE*, int) override {}
  void OnSerWrite(const BYTE*, int) override {}
};

TEST(Allocation, FailuresAreResultsAndALaterCallTriesAgain) {
  EXPECT_EQ(WithoutMemory([] { return CHubSerFactory::GetInstance(); }), nullptr);
  EXPECT_EQ(WithoutMemory([] { return CSensorFactory::GetInstance(); }), nullptr);
  EXPECT_EQ(WithoutMemory([] { return CHubAlarm::GetInstance(); }), nullptr);
  EXPECT_EQ(WithoutMemory([] { return CHubMonitor::GetInstance(); }), nullptr);

  CHubSerFactory* ports = CHubSerFactory::GetInstance();
  ASSERT_NE(ports, nullptr);
  for (const int type : {1, 9, 10}) {
    const auto get = [&] { return ports->GetHubSer(static_cast<ENUM_SERTYPE>(type)); };
    EXPECT_EQ(WithoutMemory(get), nullptr) << type;
    EXPECT_NE(get(), nullptr) << type;
  }
  CSensorFactory* drivers = CSensorFactory::GetInstance();
  ASSERT_NE(drivers, nullptr);
  for (const int kind : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 16, 17, 18, 19}) {
    const auto get = [&] { return drivers->GetSensor(static_cast<ENUM_SERDATKIND>(kind)); };
    EXPECT_EQ(WithoutMemory(get), nullptr) << kind;
    EXPECT_NE(get(), nullptr) << kind;
  }

  Observer observer;
  CSerBase port(SER_ESL1);
  EXPECT_EQ(WithoutMemory([&] { return port.InsertObserver(&observer); }), -1);
  EXPECT_EQ(port.InsertObserver(&observer), 0);
  EXPECT_EQ(WithoutMemory([] { return MapDevice(L"A name longer than any buffer of its own:", "/dev/null"); }), 0);
  EXPECT_EQ(WithoutMemory([] { return SetFlashRoot("/a/directory/longer/than/any/buffer/of/its/own"); }), 0);

  CSensorFactory::FreeInstance();
  CHubSerFactory::FreeInstance();
  CHubAlarm::FreeInstance();
  CHubMonitor::FreeInstance();
}

}  // namespace
}  // namespace fieldline::test
