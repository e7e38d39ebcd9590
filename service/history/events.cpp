#include "service/history/events.h"

#include <algorithm>

namespace fieldline::service {
namespace {

void AddFailures(Database& database, const std::string& device, UnixTime from, UnixTime until, int most,
                 std::vector<HistoryEvent>& events) {
  // A device at a time: its index gives the latest without reading the others.
  std::vector<std::pair<std::int64_t, std::string>> devices;
  Statement all(database, "SELECT id, name FROM device WHERE ?1 = '' OR name = ?1");
  all.Bind(std::string_view{device});
  while (all.Step()) devices.emplace_back(all.Integer(0), all.Text(1));
  Statement find(database,
                 "SELECT began, ended, polls, code, message FROM failure "
                 "WHERE device = ? AND ended >= ? AND began <= ? ORDER BY ended DESC LIMIT ?");
  for (const auto& [id, name] : devices) {
    find.Bind(id, from, until, most);
    while (find.Step()) {
      events.push_back({.began = find.Integer(0),
                        .ended = find.Integer(1),
                        .device = name,
                        .polls = find.Integer(2),
                        .code = find.Text(3),
                        .message = find.Text(4)});
    }
  }
}

void AddLineChanges(Database& database, UnixTime from, UnixTime until, int most, std::vector<HistoryEvent>& events) {
  Statement find(
      database,
      "SELECT line, time, code, message FROM line_change WHERE time BETWEEN ? AND ? ORDER BY id DESC LIMIT ?");
  find.Bind(from, until, most);
  while (find.Step()) {
    events.push_back({.began = find.Integer(1),
                      .ended = find.Integer(1),
                      .line = find.Text(0),
                      .code = find.Text(2),
                      .message = find.Text(3)});
  }
}

void AddAlarmChanges(Database& database, UnixTime from, UnixTime until, int most, std::vector<HistoryEvent>& events) {
  Statement find(database,
                 "SELECT time, alarm, severity, was, state, device, field, text, who, why, test FROM alarm_change "
                 "WHERE time BETWEEN ? AND ? ORDER BY id DESC LIMIT ?");
  find.Bind(from, until, most);
  while (find.Step()) {
    events.push_back({.began = find.Integer(0),
                      .ended = find.Integer(0),
                      .device = find.Text(5),
                      .alarm = find.Text(1),
                      .severity = find.Text(2),
                      .was = find.Text(3),
                      .state = find.Text(4),
                      .field = find.Text(6),
                      .text = find.Text(7),
                      .who = find.Text(8),
                      .why = find.Text(9),
                      .is_test = find.Integer(10) != 0});
  }
}

}  // namespace

std::vector<HistoryEvent> ReadEvents(Database& database, const std::string& device, UnixTime from, UnixTime until,
                                     int most) {
  std::vector<HistoryEvent> events;
  AddFailures(database, device, from, until, most, events);
  if (device.empty()) {
    AddLineChanges(database, from, until, most, events);
    AddAlarmChanges(database, from, until, most, events);
  }
  std::ranges::stable_sort(events, std::ranges::greater(), &HistoryEvent::ended);
  if (events.size() > static_cast<std::size_t>(most)) events.resize(static_cast<std::size_t>(most));
  return events;
}

}  // namespace fieldline::service
