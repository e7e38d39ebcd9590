#pragma once

#include <optional>
#include <string>

#include "polling/poller.h"

namespace fieldline {

// Sets `directory` as the library's flash root, and creates the web server's image directory below it. Throws
// UsageError when that fails.
void UseFlashRoot(const std::string& directory);

struct Snapshot {
  std::string path;
  std::size_t size;  // bytes
};

// The picture of a camera's last poll, stored below `flash_root`; empty means the library's default, "/". Turns a
// successful poll into a failure when the file does not hold the whole picture. When a poll failed because the file
// could not be created, sets that reason.
std::optional<Snapshot> FindSnapshot(const Kind& kind, const std::string& flash_root, const BYTE* record,
                                     PollResult* result);

}  // namespace fieldline
