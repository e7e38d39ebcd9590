#pragma once

#include "fieldline/sensor/sensor_base.h"

namespace fieldline {

// A new driver of a kind, the caller's. Null for a kind that is not polled, and when memory is short.
CSensorBase* MakeDriver(ENUM_SERDATKIND kind);

}  // namespace fieldline
