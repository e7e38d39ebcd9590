#include "tools/output/report.h"

#include <algorithm>
#include <iostream>

#include "polling/text.h"
#include "tools/output/alert.h"
#include "tools/output/standard_output.h"

namespace fieldline::tool {

using nlohmann::ordered_json;

namespace {

// Escapes the control characters that JSON allows but a terminal obeys: U+007F, and U+0080 to U+009F in UTF-8.
std::string WithoutControls(const std::string& json) {
  std::string text;
  for (std::size_t i = 0; i < json.size(); ++i) {
    const auto byte = static_cast<unsigned char>(json[i]);
    const auto next = static_cast<unsigned char>(json[std::min(i + 1, json.size() - 1)]);
    if (byte == 0x7F) {
      text += "\\u007f";
    } else if (byte == 0xC2 && next < 0xA0) {
      const BYTE character[] = {next};
      text += "\\u00" + Hex(character);
      ++i;
    } else {
      text += json[i];
    }
  }
  return text;
}

}  // namespace

std::string ToLine(const ordered_json& json) {
  return WithoutControls(json.dump(-1, ' ', false, ordered_json::error_handler_t::replace)) + '\n';
}

void PrintJson(const ordered_json& json) { PrintLines(ToLine(json)); }

void Complain(const std::string& text) {
  const std::string message = "fieldline: " + Alert(ForTerminal(text)) + '\n';
  std::cerr << message;
}

std::string Subject(const Kind& kind, int address) {
  std::string text(kind.name);
  if (kind.HasAddress()) text += " at address " + std::to_string(address);
  return text;
}

void ShowWarning(const std::string& subject, const Warning& warning) {
  std::cerr << "fieldline: " << ForTerminal(subject) << ": warning: " << Alert(ForTerminal(warning.message)) << '\n';
}

void ShowFailure(const std::string& subject, const Failure& failure) {
  std::cerr << "fieldline: " << ForTerminal(subject) << ": " << Alert(ForTerminal(failure.message)) << '\n';
  if (!failure.request.empty()) std::cerr << "  sent      " << Hex(failure.request, 64) << '\n';
  if (!failure.reply.empty()) std::cerr << "  received  " << Hex(failure.reply, 64) << '\n';
}

}  // namespace fieldline::tool
