#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/poller.h"

namespace fieldline::tool {

bool IsCamera(const Kind& kind);

// Adds --flash-root to a subcommand.
void AddFlashRoot(CLI::App& command, std::string& directory);

// Tells the library that pictures go below `directory`, and makes the web server's image directory there. Throws
// UsageError when it can't be made.
void UseFlashRoot(const std::string& directory);

struct Snapshot {
  std::string path;
  std::size_t size;  // bytes
};

// Adds it to the JSON of its poll.
void AddSnapshot(nlohmann::ordered_json& json, const Snapshot& snapshot);

// The picture of a camera's last poll, which went below `flash_root`; empty stands for the library's own "/". A poll
// that succeeded without a whole picture in its file becomes a failure; so does one that failed for want of the file,
// with that reason.
std::optional<Snapshot> FindSnapshot(const Kind& kind, const std::string& flash_root, const BYTE* record,
                                     PollResult* result);

}  // namespace fieldline::tool
