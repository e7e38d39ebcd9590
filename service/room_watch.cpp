#include "service/room_watch.h"

#include <algorithm>

namespace fieldline::service {
namespace {

// What a line may be silent for besides its longest interval: a device's longest pause and its slowest poll.
constexpr std::chrono::milliseconds kSlowest = std::chrono::minutes(10);

}  // namespace

RoomWatch::RoomWatch(const Site& site, const Report& report) : trace_("") {
  std::size_t first = 0;
  for (const SiteLine& site_line : site.lines) {
    const auto slowest = std::ranges::max(site_line.devices, {}, &SiteDevice::interval).interval;
    Line& line = lines_.emplace_back();
    line.longest_quiet = slowest + kSlowest;
    line.last_report = Clock::now().time_since_epoch().count();
    const SiteDevice* const devices = site_line.devices.data();
    workers_.emplace_back(site_line, WatchLimits{}, trace_,
                          [report, first, devices, &line](const SiteDevice& device, const PollResult& result) {
                            line.last_report = Clock::now().time_since_epoch().count();
                            report(first + static_cast<std::size_t>(&device - devices), result);
                          });
    first += site_line.devices.size();
  }
}

void RoomWatch::Start() {
  threads_.reserve(workers_.size());
  for (LineWorker& worker : workers_) {
    threads_.emplace_back([&worker] { worker.Run(); });
  }
}

bool RoomWatch::IsAlive() const {
  const Clock::duration now = Clock::now().time_since_epoch();
  return std::ranges::all_of(
      lines_, [now](const Line& line) { return now - Clock::duration(line.last_report) < line.longest_quiet; });
}

}  // namespace fieldline::service
