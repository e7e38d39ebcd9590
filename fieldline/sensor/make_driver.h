#pragma once

#include "fieldline/sensor/sensor_base.h"

namespace fieldline {

// Creates a driver of this kind; the caller owns it. Null for a kind that is not polled and when out of memory.
CSensorBase* MakeDriver(ENUM_SERDATKIND kind);

}  // namespace fieldline
