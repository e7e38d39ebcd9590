#pragma once

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace fieldline::test {

// Alarms for the site of the bad night: some that its events raise, and some that nothing may raise.
nlohmann::json NightAlarms();

// Replays the log of the night, prints when each alarm changed, and expects each change in time after its event.
// `events` has the moment of each event of the scenario, by its time in the file.
void ExpectNightAlarms(const std::string& site, const std::string& log,
                       const std::map<std::chrono::milliseconds, std::chrono::system_clock::time_point>& events);

}  // namespace fieldline::test
