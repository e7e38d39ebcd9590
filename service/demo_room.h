#pragma once

#include <string>
#include <thread>

#include "polling/site/site.h"
#include "sim/room.h"
#include "sim/scratch_directory.h"

namespace fieldline::service {

// A simulated machine room for whom has none at hand: values wander, and every two minutes devices and lines fail and
// come back. All its files go with it.
class DemoRoom {
 public:
  // Throws std::runtime_error when the system has no pseudo-terminals for it.
  DemoRoom();

  // Of all its devices, with some alarms. The room must outlive what polls them.
  Site MakeSite() const;

  // An empty directory.
  std::string StateDirectory() const;

 private:
  std::string LinkTo(std::string_view line) const;
  void MakeLinks() const;
  void Play(const std::stop_token& stop);

  const sim::ScratchDirectory scratch_;
  sim::Room room_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
