#include "tools/fault_option.h"

#include <charconv>

#include "tools/text.h"
#include "tools/verb.h"

namespace fieldline::tool {
namespace {

bool ReadProbability(std::string_view text, double* probability) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *probability);
  return error == std::errc{} && stop == end && *probability >= 0 && *probability <= 1;
}

// One "name=value" behind the colon.
bool ReadCondition(std::string_view name, std::string_view value, sim::FaultRule* rule) {
  constexpr long kMost = 1'000'000;
  if (name == "p") return ReadProbability(value, &rule->probability);
  const std::optional<long> number = ParseInteger(value);
  if (!number || *number < 1 || *number > kMost) return false;
  if (name == "nth") {
    rule->nth = static_cast<unsigned>(*number);
  } else if (name == "every") {
    rule->every = static_cast<unsigned>(*number);
  } else if (name == "ms") {
    rule->delay = std::chrono::milliseconds(*number);
  } else {
    return false;
  }
  return true;
}

}  // namespace

std::optional<sim::Fault> FindFault(std::string_view name) {
  if (name == "drop") return sim::Fault::kDrop;
  if (name == "corrupt") return sim::Fault::kCorrupt;
  if (name == "truncate") return sim::Fault::kTruncate;
  if (name == "noise") return sim::Fault::kNoise;
  if (name == "delay") return sim::Fault::kDelay;
  return std::nullopt;
}

sim::FaultRule ParseFault(const std::string& text) {
  const UsageError refused("--fault \"" + text + "\": write " + kFaultForm + ", such as corrupt:every=3");
  std::string_view rest = text;
  const std::size_t colon = rest.find(':');
  const std::optional<sim::Fault> fault = FindFault(rest.substr(0, colon));
  if (!fault) throw refused;

  sim::FaultRule rule;
  rule.fault = *fault;
  bool conditional = false;
  rest.remove_prefix(colon == rest.npos ? rest.size() : colon + 1);
  if (colon != rest.npos && rest.empty()) throw refused;
  while (!rest.empty()) {
    const std::string_view condition = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(rest.size(), condition.size() + 1));
    const std::size_t equals = condition.find('=');
    if (equals == condition.npos) throw refused;
    const std::string_view name = condition.substr(0, equals);
    if (!ReadCondition(name, condition.substr(equals + 1), &rule)) throw refused;
    conditional |= name != "ms";
  }
  if (!conditional) rule.every = 1;
  return rule;
}

}  // namespace fieldline::tool
