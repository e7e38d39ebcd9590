#include "fieldline/platform/service_manager.h"

namespace fieldline {

// Windows has another kind of services, which fieldlined is not yet.
void NotifyServiceManager(const std::string&) {}

std::chrono::milliseconds ServiceWatchdogTime() { return {}; }

}  // namespace fieldline
