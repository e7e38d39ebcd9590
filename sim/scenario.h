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
  std::vector<FaultRule> rules;  // in place of those that it had
};

// What happens at one moment, in the order of the members.
struct ScenarioEvent {
  std::chrono::milliseconds at{0};  // from the start
  std::string note;                 // for people
  std::vector<Setting> settings{};
  std::vector<LineFaults> faults{};
  std::vector<std::string> unplugged{};  // lines
  std::vector<std::string> replugged{};  // lines
};

// What befalls a room. Its names and values fit the room that it is played in.
struct Scenario {
  std::optional<std::uint32_t> seed{};
  bool drift = false;
  std::vector<ScenarioEvent> events{};  // in order of their time
};

class ScenarioPlayer {
 public:
  // Both must outlive the player.
  ScenarioPlayer(const Scenario& scenario, Room& room) : scenario_(scenario), room_(room) {}

  // Applies to the room what is due `elapsed` after the start and was not applied yet, drift included. Returns the
  // events that were, valid while the scenario lives. `elapsed` never falls.
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
