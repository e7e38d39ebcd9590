#include "tools/verbs/alarm_replay.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "fieldline/platform/local_time.h"
#include "polling/diagnosis.h"
#include "polling/site/duration.h"
#include "polling/usage_error.h"

namespace fieldline::tool {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;
using Quality = AlarmReading::Quality;

constexpr std::chrono::milliseconds kMargin =
    2min;                                        // added to the longest interval: a poll and a silent device's pause
constexpr std::chrono::milliseconds kStep = 1s;  // as the alarms are looked at between polls
constexpr std::chrono::milliseconds kSetBack = 1min;

AlarmTime WithLocalTime(Time time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch());
  return {time, LocalMinuteOfDay(seconds.count())};
}

const json& Member(const json& object, const char* name, bool (json::*is_right)() const noexcept) {
  const auto found = object.find(name);
  if (found == object.end() || !((*found).*is_right)()) {
    throw UsageError("\"" + std::string(name) + "\" is missing or has the wrong type");
  }
  return *found;
}

// 2024-05-17T13:45:00.123Z
Time ParseLogTime(const std::string& text) {
  constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:dd.dddZ";
  const auto fits = [](char c, char form) { return form == 'd' ? c >= '0' && c <= '9' : c == form; };
  const auto number = [&](std::size_t at, std::size_t digits) { return std::stoi(text.substr(at, digits)); };
  if (std::ranges::equal(text, kForm, fits)) {
    const std::chrono::year_month_day date{std::chrono::year(number(0, 4)),
                                           std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                           std::chrono::day(static_cast<unsigned>(number(8, 2)))};
    if (date.ok() && number(11, 2) < 24 && number(14, 2) < 60 && number(17, 2) < 60) {
      return std::chrono::sys_days{date} + std::chrono::hours(number(11, 2)) + std::chrono::minutes(number(14, 2)) +
             std::chrono::seconds(number(17, 2)) + std::chrono::milliseconds(number(20, 3));
    }
  }
  throw UsageError("\"" + text + "\" is not a time");
}

// When the poll ended, which is when its line was written.
Time EndOf(const json& poll) {
  const double duration = Member(poll, "duration_ms", &json::is_number).get<double>();
  if (!(duration >= 0 && duration <= std::chrono::duration<double, std::milli>(kDay).count())) {
    throw UsageError("\"duration_ms\" is out of range");
  }
  return ParseLogTime(Member(poll, "time", &json::is_string).get<std::string>()) +
         std::chrono::milliseconds(static_cast<long>(duration));
}

std::vector<long long> NumbersOf(const json& poll, const AlarmDevice& device) {
  const json& record = Member(poll, "record", &json::is_object);
  std::vector<long long> numbers;
  for (const RecordField& field : device.numbers) {
    const auto number = record.find(field.name);
    if (number == record.end() || !number->is_number_integer()) {
      throw UsageError("the record of " + device.name + " has no number " + std::string(field.name));
    }
    numbers.push_back(number->get<long long>());
  }
  return numbers;
}

Quality QualityOf(const json& poll) {
  if (Member(poll, "ok", &json::is_boolean).get<bool>()) return Quality::kGood;
  const json& error = Member(poll, "error", &json::is_object);
  const bool is_line = IsLineFailure(Member(error, "code", &json::is_string).get<std::string>());
  return is_line ? Quality::kLineGone : Quality::kFailed;
}

}  // namespace

AlarmReplay::AlarmReplay(const Site& site) : rules_(site.alarms), longest_gap_(0) {
  for (const AlarmDevice& device : rules_.devices) devices_.emplace(device.name, devices_.size());
  for (const SiteLine& line : site.lines) {
    for (const SiteDevice& device : line.devices) longest_gap_ = std::max(longest_gap_, device.interval + kMargin);
  }
}

AlarmEvaluator::Changes AlarmReplay::Take(const std::string& line) {
  gap_.reset();
  const json poll = json::parse(line, nullptr, false);
  if (!poll.is_object()) throw UsageError("this is not a JSON object");
  const Time time = EndOf(poll);
  const Quality quality = QualityOf(poll);
  const std::string& name = Member(poll, "device", &json::is_string).get_ref<const std::string&>();
  const auto device = devices_.find(name);
  std::vector<long long> numbers;
  if (device != devices_.end() && quality == Quality::kGood) {
    numbers = NumbersOf(poll, rules_.devices[device->second]);
  }

  AlarmEvaluator::Changes changes = AdvanceTo(time);
  ++polls_;
  if (device == devices_.end()) {
    unknown_devices_.insert(name);
    return changes;
  }
  std::ranges::move(evaluator_->Add({device->second, quality, numbers}, WithLocalTime(time)),
                    std::back_inserter(changes));
  return changes;
}

AlarmEvaluator::Changes AlarmReplay::AdvanceTo(Time time) {
  if (!evaluator_) {
    evaluator_.emplace(rules_, WithLocalTime(time));
    first_ = last_ = advanced_ = time;
  }
  AlarmEvaluator::Changes changes;
  if (time - last_ > longest_gap_ || last_ - time > kSetBack) {
    gap_ = std::chrono::round<std::chrono::seconds>(time - last_);
    evaluator_->Resume(WithLocalTime(time));
    last_ = advanced_ = time;
  }
  for (; advanced_ + kStep <= time; advanced_ += kStep) {
    std::ranges::move(evaluator_->Advance(WithLocalTime(advanced_ + kStep)), std::back_inserter(changes));
  }
  last_ = std::max(last_, time);
  return changes;
}

}  // namespace fieldline::tool
