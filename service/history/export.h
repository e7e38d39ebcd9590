#pragma once

#include <ostream>

#include "service/history/device_history.h"

namespace fieldline::service {

enum class ExportForm { kCsv, kJson };

// Prints what the history holds of a device between two times: a header and a row, or an object a line, for each time
// during which every poll brought the same.
void Export(DeviceHistory& history, const std::string& device, UnixTime from, UnixTime until, ExportForm form,
            std::ostream& out);

}  // namespace fieldline::service
