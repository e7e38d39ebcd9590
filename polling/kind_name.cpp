#include "polling/kind_name.h"

#include <vector>

#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {

const Kind& RequirePolledKind(std::string_view name) {
  const Kind* const found = FindKind(name);
  if (found != nullptr && found->IsPolled()) return *found;
  if (found != nullptr) {
    throw UsageError("\"" + std::string(name) + "\" is not polled; see fieldline " + std::string(name) + " --help");
  }
  std::vector<std::string> names;
  for (const Kind& kind : kKinds) {
    if (kind.IsPolled()) names.emplace_back(kind.name);
  }
  const std::string guess = DidYouMean(name, names);
  throw UsageError("there is no kind \"" + std::string(name) + "\"" +
                   (guess.empty() ? "; the kinds are " + Join(names) : guess));
}

std::string UsualSettings(const Kind& kind) { return std::to_string(kind.baud) + ",n,8,1"; }

bool IsCamera(const Kind& kind) { return kind.number == SERDAT_CAMERA || kind.number == SERDAT_CAMERA_3GE; }

}  // namespace fieldline
