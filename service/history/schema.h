#pragma once

#include "service/history/database.h"

// The tables of a history. Times are milliseconds since 1970, UTC.
//
// A reading that repeats the one before takes no row: a value holds from its row on, as long as polls of its device
// succeed without a gap, which `good` tells. So a room where nothing changes costs one updated row a device.
namespace fieldline::service {

constexpr int kSchemaVersion = 1;

constexpr char kSchema[] = R"(
  -- One for each start of the service, and each time that the clock was set: within a run time only goes forward.
  CREATE TABLE IF NOT EXISTS run (id INTEGER PRIMARY KEY, began INTEGER NOT NULL);

  CREATE TABLE IF NOT EXISTS device (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);

  -- A field of a device, as it was scaled: its physical value is the number divided by the factor, plus the offset.
  CREATE TABLE IF NOT EXISTS series (
    id INTEGER PRIMARY KEY, device INTEGER NOT NULL, field TEXT NOT NULL, unit TEXT NOT NULL, factor REAL NOT NULL,
    offset REAL NOT NULL, UNIQUE (device, field, unit, factor, offset));

  -- What the record held from `time` on: a whole number with its sign, or a text.
  CREATE TABLE IF NOT EXISTS reading (
    series INTEGER NOT NULL, run INTEGER NOT NULL, time INTEGER NOT NULL, value NOT NULL,
    PRIMARY KEY (series, run, time)) WITHOUT ROWID;

  -- Polls that all succeeded, from the first to the last of them.
  CREATE TABLE IF NOT EXISTS good (
    id INTEGER PRIMARY KEY, device INTEGER NOT NULL, run INTEGER NOT NULL, began INTEGER NOT NULL,
    ended INTEGER NOT NULL, polls INTEGER NOT NULL);
  CREATE INDEX IF NOT EXISTS good_by_time ON good (device, ended);
  CREATE INDEX IF NOT EXISTS good_by_run ON good (run, ended);

  -- Polls that all failed for the same reason.
  CREATE TABLE IF NOT EXISTS failure (
    id INTEGER PRIMARY KEY, device INTEGER NOT NULL, run INTEGER NOT NULL, began INTEGER NOT NULL,
    ended INTEGER NOT NULL, polls INTEGER NOT NULL, code TEXT NOT NULL, message TEXT NOT NULL);
  CREATE INDEX IF NOT EXISTS failure_by_time ON failure (device, ended);

  -- A line that could not be used any more, with the reason, or that came back, without one.
  CREATE TABLE IF NOT EXISTS line_change (
    id INTEGER PRIMARY KEY, line TEXT NOT NULL, time INTEGER NOT NULL, code TEXT, message TEXT);

  -- Five minutes of a series from `slot` on, in the unit of the series. A slot like the one before takes no row.
  CREATE TABLE IF NOT EXISTS summary (
    series INTEGER NOT NULL, slot INTEGER NOT NULL, least REAL NOT NULL, mean REAL NOT NULL, most REAL NOT NULL,
    PRIMARY KEY (series, slot)) WITHOUT ROWID;

  -- The state of each alarm of the site, as JSON: what it needs to go on after a restart.
  CREATE TABLE IF NOT EXISTS alarm_status (alarm TEXT PRIMARY KEY, status TEXT NOT NULL) WITHOUT ROWID;

  -- Each change of an alarm's state. `text` is the value that raised it; `who` and `why` are a person's.
  CREATE TABLE IF NOT EXISTS alarm_change (
    id INTEGER PRIMARY KEY, time INTEGER NOT NULL, alarm TEXT NOT NULL, severity TEXT NOT NULL, was TEXT NOT NULL,
    state TEXT NOT NULL, device TEXT NOT NULL, field TEXT NOT NULL, text TEXT NOT NULL, who TEXT NOT NULL,
    why TEXT NOT NULL, test INTEGER NOT NULL);
  CREATE INDEX IF NOT EXISTS alarm_change_by_time ON alarm_change (time);

  -- What is to be done for an alarm, and what was: it is here before it is begun. `ended` is null until then.
  CREATE TABLE IF NOT EXISTS alarm_task (
    id INTEGER PRIMARY KEY, alarm TEXT NOT NULL, raised INTEGER NOT NULL, created INTEGER NOT NULL, kind TEXT NOT NULL,
    target TEXT NOT NULL, text TEXT NOT NULL, number INTEGER NOT NULL, test INTEGER NOT NULL, other_way INTEGER NOT NULL,
    outcome TEXT NOT NULL, tries INTEGER NOT NULL, reason TEXT NOT NULL, ended INTEGER);
  CREATE INDEX IF NOT EXISTS alarm_task_by_end ON alarm_task (ended);
  CREATE INDEX IF NOT EXISTS alarm_task_by_alarm ON alarm_task (alarm, raised);

  -- Alarms that `fieldlined --test-alarm` asks for.
  CREATE TABLE IF NOT EXISTS alarm_test (alarm TEXT NOT NULL, time INTEGER NOT NULL);

  -- Good readings that the MQTT broker has not confirmed: the record of a device of this kind.
  CREATE TABLE IF NOT EXISTS mqtt_reading (
    id INTEGER PRIMARY KEY, device TEXT NOT NULL, kind TEXT NOT NULL, time INTEGER NOT NULL, record BLOB NOT NULL);

  -- Topics whose last message the MQTT broker keeps for us.
  CREATE TABLE IF NOT EXISTS mqtt_retained (topic TEXT PRIMARY KEY) WITHOUT ROWID;

  -- Up to when summaries were made, and from when on all readings are there.
  CREATE TABLE IF NOT EXISTS progress (
    id INTEGER PRIMARY KEY CHECK (id = 1), summarised INTEGER NOT NULL, readings_from INTEGER NOT NULL);
  INSERT INTO progress VALUES (1, 0, 0) ON CONFLICT DO NOTHING;
)";

// Makes what is not there yet, within the caller's transaction. Throws DatabaseError, also for a database of another
// version.
void PrepareTables(Database& database);

}  // namespace fieldline::service
