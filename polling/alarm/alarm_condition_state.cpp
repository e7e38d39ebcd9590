#include "polling/alarm/alarm_condition_state.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace fieldline {
namespace {

using Type = AlarmCondition::Type;

Truth ToTruth(bool holds) { return holds ? Truth::kYes : Truth::kNo; }

}  // namespace

AlarmConditionState::AlarmConditionState(const AlarmCondition& condition, const AlarmRules& rules, Time start)
    : condition_(&condition), rules_(&rules), counts_from_(start) {
  for (const AlarmCondition& part : condition.parts) parts_.emplace_back(part, rules, start);
  if (condition.type == Type::kChangedBy) window_.emplace(condition.time);
}

void AlarmConditionState::Read(const AlarmReading& reading, Time now) {
  for (AlarmConditionState& part : parts_) part.Read(reading, now);
  if (!IsOfNumber(condition_->type) || condition_->device != reading.device) return;
  const bool is_good = reading.quality == AlarmReading::Quality::kGood;
  truth_ = is_good ? Test(reading.numbers[condition_->number], now) : Truth::kUnknown;
}

Truth AlarmConditionState::Test(long long raw, Time now) {
  raw_ = raw;
  const RecordField& field = rules_->devices[condition_->device].numbers[condition_->number];
  const double physical = Physical(field, raw);
  const bool is_plausible = IsPlausible(field, physical);
  if (condition_->type == Type::kImplausible) return ToTruth(!is_plausible);
  if (!is_plausible) return Truth::kUnknown;
  const double number = condition_->bit ? static_cast<double>(raw >> *condition_->bit & 1) : physical;
  // Within half a count of the record: decimal fractions are not exact.
  const double half = condition_->bit ? 0.5 : 0.5 / field.factor;
  const auto equal = [&] { return std::abs(number - condition_->limit) < half; };
  switch (condition_->type) {
    case Type::kAbove:
      return ToTruth(number > condition_->limit);
    case Type::kBelow:
      return ToTruth(number < condition_->limit);
    case Type::kOutside:
      return ToTruth(number < condition_->limit || number > condition_->upper);
    case Type::kEqual:
      return ToTruth(equal());
    case Type::kNotEqual:
      return ToTruth(!equal());
    default:
      window_->Add(now, number);
      return ToTruth(window_->Change() >= condition_->limit);
  }
}

void AlarmConditionState::Forget(Time now) {
  for (AlarmConditionState& part : parts_) part.Forget(now);
  truth_ = Truth::kUnknown;
  counts_from_ = now;
  if (window_) window_->Clear();
}

Truth AlarmConditionState::Holds(const AlarmFacts& facts, Time now) const {
  const auto of_part = [&](const AlarmConditionState& part) { return part.Holds(facts, now); };
  switch (condition_->type) {
    case Type::kAll:
      return of_part(*std::ranges::min_element(parts_, {}, of_part));
    case Type::kAny:
      return of_part(*std::ranges::max_element(parts_, {}, of_part));
    case Type::kSilentFor: {
      const std::optional<Time> heard = facts.heard[condition_->device];
      const bool was_heard = heard && *heard >= counts_from_;
      if (now - (was_heard ? *heard : counts_from_) >= condition_->time) return Truth::kYes;
      return was_heard ? Truth::kNo : Truth::kUnknown;
    }
    case Type::kLineGone: {
      const std::optional<bool> is_gone = facts.line_gone[condition_->device];
      return is_gone ? ToTruth(*is_gone) : Truth::kUnknown;
    }
    default:
      return truth_;
  }
}

std::optional<AlarmCause> AlarmConditionState::Cause(const AlarmFacts& facts, Time now) const {
  if (Holds(facts, now) != Truth::kYes) return std::nullopt;
  for (const AlarmConditionState& part : parts_) {
    if (std::optional<AlarmCause> cause = part.Cause(facts, now)) return cause;
  }
  if (condition_->type == Type::kLineGone) return AlarmCause{rules_->lines[condition_->device], {}, {}, "gone"};
  const AlarmDevice& device = rules_->devices[condition_->device];
  if (condition_->type == Type::kSilentFor) return AlarmCause{device.name, {}, {}, "silent"};
  const RecordField& field = device.numbers[condition_->number];
  const std::string text = IsPhysical(field) ? PhysicalText(field, raw_) : std::to_string(raw_);
  return AlarmCause{device.name, std::string(field.name), Physical(field, raw_), text};
}

void AlarmConditionState::AppendWindows(std::vector<std::vector<ChangeWindow::Part>>& windows) const {
  for (const AlarmConditionState& part : parts_) part.AppendWindows(windows);
  if (window_) windows.push_back(window_->parts());
}

void AlarmConditionState::SetWindows(std::span<std::vector<ChangeWindow::Part>>& windows) {
  for (AlarmConditionState& part : parts_) part.SetWindows(windows);
  if (!window_ || windows.empty()) return;
  window_->Restore(std::move(windows.front()));
  windows = windows.subspan(1);
}

}  // namespace fieldline
