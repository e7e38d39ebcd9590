#include "fieldline/platform/device_path.h"

namespace fieldline {

int ProcessThatHolds(const char*) { return 0; }

}  // namespace fieldline
