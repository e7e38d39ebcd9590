// Computing time of the alarms for a poll: 1000 alarms on 500 devices, of which each has two. One in ten alarms is a
// device's silence, which depends on its line's alarm; the others test a number, with an on-delay and a deadband.

#include <benchmark/benchmark.h>

#include <string>

#include "polling/alarm/alarm_evaluator.h"

namespace {

using namespace std::chrono_literals;
using fieldline::AlarmCondition;
using fieldline::AlarmEvaluator;
using fieldline::AlarmReading;
using fieldline::AlarmRule;
using fieldline::AlarmRules;
using fieldline::AlarmTime;
using Type = AlarmCondition::Type;

constexpr std::size_t kDevices = 500;
constexpr std::size_t kDevicesPerLine = 10;
constexpr std::size_t kAlarms = 1000;

AlarmRules MakeRules() {
  AlarmRules rules;
  for (std::size_t line = 0; line < kDevices / kDevicesPerLine; ++line) {
    rules.lines.push_back("line-" + std::to_string(line));
    AlarmRule& gone = rules.rules.emplace_back();
    gone.when = {.type = Type::kLineGone, .device = line};
  }
  for (std::size_t device = 0; device < kDevices; ++device) {
    rules.devices.push_back(
        {"device-" + std::to_string(device),
         device / kDevicesPerLine,
         {{.name = "temperature", .position = 0, .type = fieldline::FieldType::kI16, .factor = 10}}});
  }
  for (std::size_t device = 0; rules.rules.size() < kAlarms; device = (device + 1) % kDevices) {
    AlarmRule& rule = rules.rules.emplace_back();
    if (rules.rules.size() % 10 == 0) {
      rule.when = {.type = Type::kSilentFor, .device = device, .time = 60s};
      rule.depends_on = device / kDevicesPerLine;
    } else {
      rule.when = {.type = Type::kAbove, .device = device, .limit = 28};
      rule.on_delay = 60s;
      rule.clear = AlarmCondition{.type = Type::kBelow, .device = device, .limit = 26.5};
    }
  }
  return rules;
}

AlarmTime At(long second) {
  return {fieldline::Time(std::chrono::seconds(second)), static_cast<int>(second / 60 % 1440)};
}

// A poll of one device after the other. One in a hundred reads a value above the limit.
void Reading(benchmark::State& state) {
  const AlarmRules rules = MakeRules();
  AlarmEvaluator evaluator(rules, At(0));
  std::size_t polls = 0;
  for (auto _ : state) {
    const long long number[] = {polls % 100 == 0 ? 285 : 250};
    benchmark::DoNotOptimize(evaluator.Add({polls % kDevices, AlarmReading::Quality::kGood, number},
                                           At(static_cast<long>(polls / kDevices))));
    ++polls;
  }
}
BENCHMARK(Reading);

// What is done once a second between polls.
void Second(benchmark::State& state) {
  const AlarmRules rules = MakeRules();
  AlarmEvaluator evaluator(rules, At(0));
  long second = 0;
  for (auto _ : state) benchmark::DoNotOptimize(evaluator.Advance(At(second++ % 60)));
}
BENCHMARK(Second);

}  // namespace
