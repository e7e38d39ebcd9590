#include "service/alarm/alarm_task.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace fieldline::service {
namespace {

using Kind = AlarmTask::Kind;
using Outcome = AlarmTask::Outcome;

constexpr std::pair<Kind, std::string_view> kKinds[] = {
    {Kind::kSms,     "sms"    },
    {Kind::kMms,     "mms"    },
    {Kind::kDial,    "dial"   },
    {Kind::kSpeech,  "speech" },
    {Kind::kRelay,   "relay"  },
    {Kind::kPicture, "picture"},
    {Kind::kDisplay, "display"},
};

constexpr std::pair<Outcome, std::string_view> kOutcomes[] = {
    {Outcome::kWaiting,    "waiting"   },
    {Outcome::kHeld,       "held"      },
    {Outcome::kDone,       "done"      },
    {Outcome::kFailed,     "failed"    },
    {Outcome::kSummarised, "summarised"},
    {Outcome::kReplaced,   "replaced"  },
};

}  // namespace

std::string_view NameOf(Kind kind) {
  return std::ranges::find(kKinds, kind, &std::pair<Kind, std::string_view>::first)->second;
}

std::string_view NameOf(Outcome outcome) {
  return std::ranges::find(kOutcomes, outcome, &std::pair<Outcome, std::string_view>::first)->second;
}

const Kind* FindTaskKind(std::string_view name) {
  const auto* const found = std::ranges::find(kKinds, name, &std::pair<Kind, std::string_view>::second);
  return found != std::end(kKinds) ? &found->first : nullptr;
}

const Outcome* FindTaskOutcome(std::string_view name) {
  const auto* const found = std::ranges::find(kOutcomes, name, &std::pair<Outcome, std::string_view>::second);
  return found != std::end(kOutcomes) ? &found->first : nullptr;
}

}  // namespace fieldline::service
