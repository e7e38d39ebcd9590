#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "polling/line_file.h"

namespace fieldline::tool {

// Adds --log to a subcommand.
void AddLogOption(CLI::App& command, std::string& path);

// The file of --log: a JSON object a line, written at once. A hang-up (SIGHUP) opens it anew under its name, as the
// usual tools want when they rotate it.
class PollLog {
 public:
  // An empty path stands for no log. Throws UsageError when the file can't be written.
  explicit PollLog(const std::string& path);

  bool IsWanted() const { return wanted_; }

  // Any thread may call it.
  void Append(const nlohmann::ordered_json& json);

 private:
  const bool wanted_;
  LineFile file_;
};

}  // namespace fieldline::tool
