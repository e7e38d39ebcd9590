#include <gtest/gtest.h>

#include "fieldline/fieldline.h"
#include "sim/catalog.h"
#include "tests/allocation/allocations.h"
#include "tests/support/flash_images.h"

namespace fieldline::test {
namespace {

struct Counted {
  int result;
  int made;
  int left;  // made and not freed by the poll
};

Counted Poll(CSensorBase& driver, ISerBase& port, bool has_memory) {
  Allocations& heap = Heap();
  heap.made = 0;
  heap.alive = 0;
  heap.fail = !has_memory;
  heap.paused = false;
  const int result = driver.GetData(&port, 0);
  heap.paused = true;
  heap.fail = false;
  return {result, heap.made, heap.alive};
}

void ExpectPoll(CSensorBase& driver, ISerBase& port, bool has_memory, Counted expected, const char* what) {
  const Counted poll = Poll(driver, port, has_memory);
  EXPECT_EQ(poll.result, expected.result) << what;
  EXPECT_EQ(poll.made, expected.made) << what;
  EXPECT_EQ(poll.left, expected.left) << what;
}

// A port whose device answers the first commands only.
class FadingPort final : public CSerBase {
 public:
  explicit FadingPort(ISerBase* port) : port_(port) {}
  int IsOpened() override { return 1; }
  int Read(BYTE* data, int count) override { return reads-- > 0 ? port_->Read(data, count) : 0; }
  int Write(const BYTE* data, int count) override { return port_->Write(data, count); }

  int reads = 0;

 private:
  ISerBase* port_;
};

TEST(CameraAllocation, IsOneImageBufferThatGoesWithThePoll) {
  const FlashImages flash;
  UncountedDevicePort port(sim::Make("camera", 0));
  CSensorCamera camera;
  ExpectPoll(camera, port, true, {1, 1, 0}, "stored");
  ExpectPoll(camera, port, false, {0, 0, 0}, "no memory");

  FadingPort fading(&port);
  for (int reads = 0; reads < 6; ++reads) {
    fading.reads = reads;
    ExpectPoll(camera, fading, true, {0, 1, 0}, "silence");
    port.Purge();
  }
  CSerBase closed(SER_COM);
  ExpectPoll(camera, closed, true, {0, 0, 0}, "closed port");
}

TEST(CameraAllocation, TheSecondCameraMakesNone) {
  const FlashImages flash;
  UncountedDevicePort port(sim::Make("camera-3ge", 0));
  CSensorCamera3ge camera;
  ExpectPoll(camera, port, true, {1, 0, 0}, "stored");
}

}  // namespace
}  // namespace fieldline::test
