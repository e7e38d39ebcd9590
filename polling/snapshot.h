#pragma once

#include <optional>
#include <string>

#include "polling/poller.h"

namespace fieldline {

// Tells the library that pictures go below `directory`, and makes the web server's image directory there. Throws
// UsageError when it can't be made.
void UseFlashRoot(const std::string& directory);

struct Snapshot {
  std::string path;
  std::size_t size;  // bytes
};

// The picture of a camera's last poll, which went below `flash_root`; empty stands for the library's own "/". A poll
// that succeeded without a whole picture in its file becomes a failure; so does one that failed for want of the file,
// with that reason.
std::optional<Snapshot> FindSnapshot(const Kind& kind, const std::string& flash_root, const BYTE* record,
                                     PollResult* result);

}  // namespace fieldline
