#include "sim/scenario.h"

namespace fieldline::sim {

std::span<const ScenarioEvent> ScenarioPlayer::Advance(std::chrono::milliseconds elapsed) {
  const std::size_t first = next_;
  const std::span<const ScenarioEvent> events = scenario_.events;
  while (next_ < events.size() && events[next_].at <= elapsed) {
    Drift(events[next_].at);
    Apply(events[next_]);
    ++next_;
  }
  Drift(elapsed);
  return events.subspan(first, next_ - first);
}

void ScenarioPlayer::Drift(std::chrono::milliseconds until) {
  if (scenario_.drift) room_.Drift(std::chrono::duration<double>(until - drifted_).count());
  drifted_ = until;
}

void ScenarioPlayer::Apply(const ScenarioEvent& event) {
  std::string ignored;
  for (const Setting& setting : event.settings) room_.Set(setting.device, setting.value, setting.text, &ignored);
  for (const LineFaults& faults : event.faults) room_.SetFaults(faults.line, faults.rules);
  for (const std::string& line : event.unplugged) room_.FindLine(line)->Stop();
  for (const std::string& line : event.replugged) {
    if (room_.Path(line).empty()) room_.FindLine(line)->Start();
  }
}

}  // namespace fieldline::sim
