#pragma once

#include <string>

#include "polling/site/site.h"
#include "service/alarm/task_worker.h"
#include "service/picture/picture_taker.h"

namespace fieldline::service {

// How the devices of a site that act are used. `device` must outlive the hands, and of the alarm board and the display
// there is one pair each: the library has one controller and one display.
TaskWorker::Hands BoardHands(const ControlledDevice& device);
TaskWorker::Hands DisplayHands(const ControlledDevice& device);

// Takes pictures with any camera of the site. After a task that was done, the reason is the picture's path. `taker`
// must outlive the hands.
TaskWorker::Hands CameraHands(const Site& site, PictureTaker& taker);

}  // namespace fieldline::service
