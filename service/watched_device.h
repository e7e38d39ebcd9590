#pragma once

#include <vector>

#include "polling/site/site.h"

namespace fieldline::service {

// A device of the site, with its line. Both live as long as the site.
struct WatchedDevice {
  const SiteLine* line;
  const SiteDevice* device;
};

// All devices in the order of the site file, cameras last. Their positions here are their numbers throughout the
// service.
inline std::vector<WatchedDevice> DevicesOf(const Site& site) {
  std::vector<WatchedDevice> devices;
  for (const SiteLine& line : site.lines) {
    for (const SiteDevice& device : line.devices) devices.push_back({&line, &device});
  }
  for (const SiteLine& camera : site.cameras) devices.push_back({&camera, &camera.devices[0]});
  return devices;
}

}  // namespace fieldline::service
