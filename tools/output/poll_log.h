#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "polling/line_file.h"

namespace fieldline::tool {

// Adds --log to a subcommand.
void AddLogOption(CLI::App& command, std::string& path);

// The file of --log: one JSON object per line, each written at once. SIGHUP reopens it by name, as log rotation needs.
class PollLog {
 public:
  // An empty path means no log. Throws UsageError when the file can't be written.
  explicit PollLog(const std::string& path);

  bool IsWanted() const { return wanted_; }

  // Thread-safe.
  void Append(const nlohmann::ordered_json& json);

 private:
  const bool wanted_;
  LineFile file_;
};

}  // namespace fieldline::tool
