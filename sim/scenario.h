#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sim/room.h"

namespace fieldline::sim {

struct Setting {
  std::string device;
  std::string value;
  std::string text;
};

struct LineFaults {
  std::string line;
  std::vector<FaultRule> rules;  // replace the earlier rules of the line
};

// Changes at one point in time, in the order of the members.
struct ScenarioEvent {
  std::chrono::milliseconds at{0};  // from the start
  std::string note;                 // for display
  std::vector<Setting> settings{};
  std::vector<LineFaults> faults{};
  std::vector<std::string> unplugged{};  // lines
  std::vector<std::string> replugged{};  // lines
};

// What happens in a room. The names and values must fit the room in which it is played.
struct Scenario {
  std::optional<std::uint32_t> seed{};
  bool drift = false;
  std::vector<ScenarioEvent> events{};  // sorted by time
};

class ScenarioPlayer {
 public:
  // Both must outlive the player.
  ScenarioPlayer(const Scenario& scenario, Room& room) : scenario_(scenario), room_(room) {}

  // Applies everything that is due `elapsed` after the start and was not applied yet, including drift. Returns the
  // events that were applied, valid while the scenario lives. `elapsed` must not decrease.
  std::span<const ScenarioEvent> Advance(std::chrono::milliseconds elapsed);

 private:
  void Drift(std::chrono::milliseconds until);
  void Apply(const ScenarioEvent& event);

  const Scenario& scenario_;
  Room& room_;
  std::size_t next_ = 0;
  std::chrono::milliseconds drifted_{0};  // from the start
};

}  // namespace fieldline::sim
