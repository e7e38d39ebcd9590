#pragma once

#include <string>

#include "polling/text.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// 2026-05-17T13:45:00Z, 2026-05-17, or 24h for so long before `now`. Throws UsageError.
UnixTime ParseTime(const std::string& text, Time now);

}  // namespace fieldline::service
