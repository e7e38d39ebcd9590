#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "polling/site/site.h"
#include "service/alarm/task_worker.h"
#include "service/picture/picture_taker.h"

namespace fieldline::service {

// What acts for alarms: each takes its tasks one after the other.
enum class ActingDevice { kBoard, kDisplay, kCameras };
constexpr std::size_t kActingDevices = 3;

// How such a device is used; without hands, the site has none.
struct NamedHands {
  std::string name{};
  TaskWorker::Hands hands{};
};
using ActingHands = std::array<NamedHands, kActingDevices>;  // by device

// Those of the site; there are none when it has no alarms. `site` and `taker` must outlive them, and there may be one
// such set in a program: the library has one alarm controller and one display. Of a picture that was taken, the
// result's reason is the path.
ActingHands HandsOf(const Site& site, PictureTaker& taker);

}  // namespace fieldline::service
