#include "tools/output/report.h"

#include <iostream>

#include "polling/text.h"
#include "tools/output/alert.h"

namespace fieldline::tool {

using nlohmann::ordered_json;

void PrintJson(const ordered_json& json) {
  std::cout << json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << std::endl;
}

std::string Subject(const Kind& kind, int address) {
  std::string text(kind.name);
  if (kind.HasAddress()) text += " at address " + std::to_string(address);
  return text;
}

void ShowWarning(const std::string& subject, const Warning& warning) {
  std::cerr << "fieldline: " << subject << ": warning: " << Alert(warning.message) << '\n';
}

void ShowFailure(const std::string& subject, const Failure& failure) {
  std::cerr << "fieldline: " << subject << ": " << Alert(failure.message) << '\n';
  if (!failure.request.empty()) std::cerr << "  sent      " << Hex(failure.request, 64) << '\n';
  if (!failure.reply.empty()) std::cerr << "  received  " << Hex(failure.reply, 64) << '\n';
}

}  // namespace fieldline::tool
