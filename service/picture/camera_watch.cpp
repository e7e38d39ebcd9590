#include "service/picture/camera_watch.h"

#include <algorithm>
#include <utility>

#include "fieldline/platform/console.h"

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kAfterFailure = std::chrono::minutes(1);  // the next try, or sooner where the interval says so

}  // namespace

CameraWatch::CameraWatch(const Site& site, PictureTaker& taker, Report report)
    : taker_(taker), report_(std::move(report)) {
  std::size_t device = DevicesOf(site).size() - site.cameras.size();
  for (const SiteLine& line : site.cameras) cameras_.push_back({device++, &line, Clock::now()});
}

void CameraWatch::Start() {
  if (!cameras_.empty()) thread_ = std::jthread([this] { Run(); });
}

void CameraWatch::Run() {
  while (!Interrupted()) {
    Camera& next = *std::ranges::min_element(cameras_, {}, &Camera::due);
    const auto wait = std::chrono::ceil<milliseconds>(next.due - Clock::now());
    if (wait > milliseconds(0)) {
      SleepUnlessInterrupted(static_cast<int>(wait.count()));
    } else {
      TakePicture(next);
    }
  }
}

void CameraWatch::TakePicture(Camera& camera) {
  const auto began = Clock::now();
  const PollResult result = taker_.Take(*camera.line).result;
  if (Interrupted() && result.failure) return;
  const milliseconds interval = camera.line->devices[0].interval;
  camera.due = result.failure ? Clock::now() + std::min(interval, kAfterFailure) : began + interval;
  report_(camera.device, result);
}

}  // namespace fieldline::service
