#pragma once

#include <cstdint>
#include <string>

namespace fieldline {

// What the clocks of the unit's time zone show at a moment, which is given in seconds since 1970 (UTC): minutes from
// midnight. Used by the command; not part of the library.
int LocalMinuteOfDay(std::int64_t seconds);

// The same moment as people write it: 2024-05-17 13:45:00.
std::string LocalTimeText(std::int64_t seconds);

}  // namespace fieldline
