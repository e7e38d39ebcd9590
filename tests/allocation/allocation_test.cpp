// This program's operator new counts, and fails on demand.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "fieldline/fieldline.h"
#include "fieldline/kinds.h"
#include "fieldline/sensor/make_driver.h"
#include "tests/support/device_port.h"
#include "tests/support/fake_clock.h"
#include "tests/support/flash_images.h"
#include "tests/support/make_device.h"

namespace {

struct {
  int made = 0;   // since the last look
  int alive = 0;  // made and not freed
  bool fail = false;
  bool paused = true;  // neither count nor fail: what the test itself allocates
} heap;

// Not inlined: g++ would see malloc() behind a new[] expression and call its delete[] mismatched.
[[gnu::noinline]] void* Allocate(std::size_t size) {
  if (!heap.paused) {
    if (heap.fail) return nullptr;
    ++heap.made;
    ++heap.alive;
  }
  return std::malloc(size ? size : 1);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* p = Allocate(size)) return p;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* p) noexcept {
  if (p && !heap.paused) --heap.alive;
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }
void operator delete[](void* p) noexcept { operator delete(p); }
void operator delete[](void* p, std::size_t) noexcept { operator delete(p); }

namespace fieldline::test {
namespace {

// A simulated device that answers so many reads, and whose own allocations are not counted.
class UncountedDevicePort final : public DevicePort {
 public:
  using DevicePort::DevicePort;
  int Read(BYTE* data, int count) override {
    return reads-- > 0 ? Uncounted([&] { return DevicePort::Read(data, count); }) : 0;
  }
  int Write(const BYTE* data, int count) override {
    return Uncounted([&] { return DevicePort::Write(data, count); });
  }
  int IsOpened() override { return open; }

  int reads = 1000;
  int open = 1;

 private:
  int Uncounted(const auto& call) {
    heap.paused = true;
    const int result = call();
    heap.paused = false;
    return result;
  }
};

// Runs `call` with counted allocations, which fail if asked.
template <class Call>
auto Counted(Call call, bool has_memory = true) {
  heap = {.fail = !has_memory, .paused = false};
  const auto result = call();
  heap.paused = true;
  return result;
}

// Of one poll.
struct Cost {
  int result;
  int made;
  int left;  // made and not freed
  bool operator==(const Cost&) const = default;
};

Cost CountedPoll(CSensorBase& driver, ISerBase* port, int addr, bool has_memory = true) {
  const int result = Counted([&] { return driver.GetData(port, addr); }, has_memory);
  return {result, heap.made, heap.alive};
}

TEST(Allocation, PollsMakeNoneButTheFirstCameraItsImage) {
  Clock().sleeps.reserve(100);
  const FlashImages flash;
  const TempDirectory directory;
  directory.WriteFile("eio1", "\x81");
  MapDevice(L"EIO1:", directory.Path("eio1").c_str());
  for (const Kind& kind : kKinds) {
    if (!kind.IsPolled()) continue;
    const std::unique_ptr<CSensorBase> driver(MakeDriver(kind.number));
    for (const int addr : {kind.address, kind.address + 1}) {
      const int made = kind.number == SERDAT_CAMERA ? 1 : 0;
      std::unique_ptr<UncountedDevicePort> port;
      if (kind.HasLine()) port = std::make_unique<UncountedDevicePort>(MakeDevice(kind.name, addr));
      EXPECT_EQ(CountedPoll(*driver, port.get(), addr), (Cost{1, made, 0})) << kind.name;
    }
  }
  MapDevice(L"EIO1:", nullptr);
}

TEST(Allocation, TheImageGoesWithAPollThatFails) {
  UncountedDevicePort port(MakeDevice("camera", 0));
  CSensorCamera camera;
  EXPECT_EQ(CountedPoll(camera, &port, 0, false), (Cost{0, 0, 0})) << "no memory";
  for (int reads = 0; reads < 6; ++reads) {
    port.reads = reads;
    EXPECT_EQ(CountedPoll(camera, &port, 0), (Cost{0, 1, 0})) << "silence";
    port.Purge();
  }
  port.open = 0;
  EXPECT_EQ(CountedPoll(camera, &port, 0), (Cost{0, 0, 0})) << "closed port";
}

class Observer : public ISerObserver {
  void OnSerRead(const BYTE*, int) override {}
  void OnSerWrite(const BYTE*, int) override {}
};

TEST(Allocation, FailuresAreResultsAndALaterCallTriesAgain) {
  const auto expect_null_first = [](const auto& get) {
    EXPECT_EQ(Counted(get, false), nullptr);
    EXPECT_NE(get(), nullptr);
  };
  expect_null_first(CHubSerFactory::GetInstance);
  expect_null_first(CSensorFactory::GetInstance);
  for (const ENUM_SERTYPE type : {SER_ESL1, SER_TEST, SER_COM}) {
    expect_null_first([&] { return CHubSerFactory::GetInstance()->GetHubSer(type); });
  }
  for (const Kind& kind : kKinds) {
    if (kind.number == SERDAT_CARD_K || kind.number == SERDAT_CAMERA_3GE) continue;
    expect_null_first([&] { return CSensorFactory::GetInstance()->GetSensor(kind.number); });
  }
  CHubAlarm::FreeInstance();
  CHubMonitor::FreeInstance();
  expect_null_first(CHubAlarm::GetInstance);
  expect_null_first(CHubMonitor::GetInstance);

  Observer observer;
  CSerBase port(SER_ESL1);
  const auto insert = [&] { return port.InsertObserver(&observer); };
  EXPECT_EQ(Counted(insert, false), -1);
  EXPECT_EQ(insert(), 0);
  const auto map = [] { return MapDevice(L"A name longer than any buffer of its own:", "/dev/null"); };
  EXPECT_EQ(Counted(map, false), 0);
  const auto set_root = [] { return SetFlashRoot("/a/directory/longer/than/any/buffer/of/its/own"); };
  EXPECT_EQ(Counted(set_root, false), 0);

  CSensorFactory::FreeInstance();
  CHubSerFactory::FreeInstance();
  CHubAlarm::FreeInstance();
  CHubMonitor::FreeInstance();
}

}  // namespace
}  // namespace fieldline::test
