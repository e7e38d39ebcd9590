#pragma once

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "service/picture/picture_taker.h"
#include "service/watched_device.h"

namespace fieldline::service {

// Takes pictures with all cameras of a site, in turn, on a thread of its own: no other line ever waits for a picture.
class CameraWatch {
 public:
  // Is told of each picture, on that thread; `device` is the camera's number, see DevicesOf().
  using Report = std::function<void(std::size_t device, const PollResult& result)>;

  // `site` and `taker` must outlive this.
  CameraWatch(const Site& site, PictureTaker& taker, Report report);

  // Until the program is interrupted. Throws std::system_error when no thread can be made.
  void Start();

 private:
  using Clock = std::chrono::steady_clock;

  struct Camera {
    std::size_t device;
    const SiteLine* line;
    Clock::time_point due;
  };

  void Run();
  void TakePicture(Camera& camera);

  PictureTaker& taker_;
  const Report report_;
  std::vector<Camera> cameras_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
