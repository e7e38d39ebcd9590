#pragma once

#include <cstdint>

namespace fieldline {

// What the clocks of the unit's time zone show at a moment, which is given in seconds since 1970 (UTC): minutes from
// midnight. Used by the command; not part of the library.
int LocalMinuteOfDay(std::int64_t seconds);

}  // namespace fieldline
