#pragma once

#include <string>

#include "polling/site/site.h"
#include "service/alarm/task_worker.h"

namespace fieldline::service {

// How the devices of a site that act are used. `device` must outlive the hands, and of the alarm board and the display
// there is one pair each: the library has one controller and one display.
TaskWorker::Hands BoardHands(const ControlledDevice& device);
TaskWorker::Hands DisplayHands(const ControlledDevice& device);

// Takes pictures with any camera of the site, and keeps the latest below `directory`. After a task that was done, the
// reason is the picture's path.
TaskWorker::Hands CameraHands(const Site& site, const std::string& directory);

}  // namespace fieldline::service
