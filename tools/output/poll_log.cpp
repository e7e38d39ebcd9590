#include "tools/output/poll_log.h"

#include "fieldline/platform/console.h"
#include "polling/usage_error.h"
#include "tools/output/report.h"

namespace fieldline::tool {

void AddLogOption(CLI::App& command, std::string& path) {
  std::string help = "Append every poll as a JSON object to this file";
  if (kReopenSignal != nullptr) help += std::string("; ") + kReopenSignal + " reopens it";
  command.add_option("--log", path, help)->type_name("FILE");
}

PollLog::PollLog(const std::string& path) : wanted_(!path.empty()) {
  if (!wanted_) return;
  if (const std::error_code error = file_.Open(path, LineFile::Mode::kAppend)) {
    throw UsageError("--log " + path + ": the file can't be written: " + error.message() + "; write a path that can");
  }
  CatchReopenRequests();
}

void PollLog::Append(const nlohmann::ordered_json& json) {
  if (!wanted_) return;
  if (TakeReopenRequest()) file_.Reopen();
  file_.Append(ToLine(json));
}

}  // namespace fieldline::tool
