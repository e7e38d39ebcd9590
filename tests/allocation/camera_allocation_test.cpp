#include <gtest/gtest.h>

#include "fieldline/fieldline.h"
#include "tests/allocation/allocations.h"
#include "tests/support/flash_images.h"
#include "tests/support/make_device.h"

namespace fieldline::test {
namespace {

struct Counted {
  int result;
  int made;
  int left;  // made and not freed by the poll

  bool operator==(const Counted&) const = default;
};

Counted Poll(CSensorBase& driver, ISerBase& port, bool has_memory = true) {
  Allocations& heap = Heap();
  heap = {.fail = !has_memory};
  const int result = driver.GetData(&port, 0);
  heap.paused = true;
  heap.fail = false;
  return {result, heap.made, heap.alive};
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
  UncountedDevicePort port(MakeDevice("camera", 0));
  CSensorCamera camera;
  EXPECT_EQ(Poll(camera, port), (Counted{1, 1, 0})) << "stored";
  EXPECT_EQ(Poll(camera, port, false), (Counted{0, 0, 0})) << "no memory";

  FadingPort fading(&port);
  for (int reads = 0; reads < 6; ++reads) {
    fading.reads = reads;
    EXPECT_EQ(Poll(camera, fading), (Counted{0, 1, 0})) << "silence";
    port.Purge();
  }
  CSerBase closed(SER_COM);
  EXPECT_EQ(Poll(camera, closed), (Counted{0, 0, 0})) << "closed port";

  UncountedDevicePort second(MakeDevice("camera-3ge", 0));
  CSensorCamera3ge streaming;
  EXPECT_EQ(Poll(streaming, second), (Counted{1, 0, 0})) << "the second camera makes none";
}

}  // namespace
}  // namespace fieldline::test
