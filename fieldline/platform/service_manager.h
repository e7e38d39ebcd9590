#pragma once

#include <chrono>
#include <string>

namespace fieldline {

// The system's manager of services, which started this program, or did not. Used by the service; not part of the
// library.

// Tells it something, such as "READY=1", "STOPPING=1", "WATCHDOG=1" or "STATUS=text". Does nothing when there is none
// that listens.
void NotifyServiceManager(const std::string& state);

// How long it waits between two "WATCHDOG=1" before it starts the program anew; zero: for ever.
std::chrono::milliseconds ServiceWatchdogTime();

}  // namespace fieldline
