#include "fieldline/platform/device_path.h"

namespace fieldline {

const char* const kUsualSerialPath = "COM3";

// Windows tells no ordinary program.
int ProcessThatHolds(const char*) { return 0; }

}  // namespace fieldline
