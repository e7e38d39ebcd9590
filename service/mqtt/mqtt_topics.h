#pragma once

#include <string>
#include <string_view>

namespace fieldline::service {

// The topics of a unit below its prefix, as docs/mqtt.md lists them.
class MqttTopics {
 public:
  MqttTopics(const std::string& prefix, const std::string& unit) : unit_(prefix + '/' + unit + '/') {}

  std::string Status() const { return unit_ + "status"; }
  std::string State(std::string_view device) const { return Device(device) + "state"; }
  std::string Availability(std::string_view device) const { return Device(device) + "availability"; }
  std::string Readings(std::string_view device) const { return Device(device) + "readings"; }
  std::string Alarm(std::string_view alarm) const;
  std::string Acknowledgement(std::string_view alarm) const { return Alarm(alarm) + kAcknowledge; }
  std::string AllAcknowledgements() const { return unit_ + "alarms/+" + kAcknowledge; }

 private:
  static constexpr char kAcknowledge[] = "/acknowledge";

  std::string Device(std::string_view device) const;

  const std::string unit_;
};

// A name as a level of a topic: what has a meaning in topics is written as %XX, and so is the percent sign.
std::string TopicLevel(std::string_view name);

// A name as Home Assistant takes it in identifiers: letters, digits, dashes and underscores. Others are written as _XX.
std::string Identifier(std::string_view name);

}  // namespace fieldline::service
