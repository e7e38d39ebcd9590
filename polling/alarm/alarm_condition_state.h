#pragma once

#include <optional>
#include <span>
#include <vector>

#include "polling/alarm/alarm_rule.h"
#include "polling/alarm/alarm_status.h"
#include "polling/alarm/change_window.h"

namespace fieldline {

// Whether a condition holds. In this order, `all` is the least of its parts and `any` the greatest.
enum class Truth { kNo, kUnknown, kYes };

// What a poll gave.
struct AlarmReading {
  enum class Quality {
    kGood,
    kFailed,
    kLineGone,  // the line can't be opened, or nothing can be sent on it
  };

  std::size_t device;
  Quality quality;
  std::span<const long long> numbers = {};  // raw, of AlarmDevice::numbers; of a good poll only
};

// What is known of the devices and lines apart from their numbers.
struct AlarmFacts {
  std::vector<std::optional<Time>> heard;      // time of each device's last good poll since the start
  std::vector<std::optional<bool>> line_gone;  // as each line's last poll said
};

// A condition with the last readings that concern it.
class AlarmConditionState {
 public:
  // `condition` and `rules` must outlive this.
  AlarmConditionState(const AlarmCondition& condition, const AlarmRules& rules, Time start);

  // A poll of any device. After a failed one, whether the device's numbers pass a test is unknown.
  void Read(const AlarmReading& reading, Time now);

  // Forgets all readings. Silence counts from `now`.
  void Forget(Time now);

  Truth Holds(const AlarmFacts& facts, Time now) const;

  // The first test that holds.
  std::optional<AlarmCause> Cause(const AlarmFacts& facts, Time now) const;

  // The windows of the kChangedBy tests, in order. SetWindows takes those that belong to this condition from the front.
  void AppendWindows(std::vector<std::vector<ChangeWindow::Part>>& windows) const;
  void SetWindows(std::span<std::vector<ChangeWindow::Part>>& windows);

 private:
  Truth Test(long long raw, Time now);

  const AlarmCondition* condition_;
  const AlarmRules* rules_;
  std::vector<AlarmConditionState> parts_;
  Time counts_from_;               // silence
  Truth truth_ = Truth::kUnknown;  // of a number
  long long raw_ = 0;              // of the last good reading
  std::optional<ChangeWindow> window_;
};

}  // namespace fieldline
