#include "service/mqtt/mqtt_topics.h"

#include <cctype>

namespace fieldline::service {
namespace {

std::string HexDigits(unsigned char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  return {kDigits[byte >> 4], kDigits[byte & 0xF]};
}

}  // namespace

std::string MqttTopics::Device(std::string_view device) const {
  std::string level = TopicLevel(device);
  // What is below that name is the unit's alarms.
  if (level == "alarms") level = "%61larms";
  return unit_ + level + '/';
}

std::string MqttTopics::Alarm(std::string_view alarm) const { return unit_ + "alarms/" + TopicLevel(alarm); }

std::string TopicLevel(std::string_view name) {
  constexpr std::string_view kSpecial = "/+#%$";
  std::string level;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7F || kSpecial.find(c) != std::string_view::npos) {
      level += '%' + HexDigits(byte);
    } else {
      level += c;
    }
  }
  return level;
}

std::string Identifier(std::string_view name) {
  std::string identifier;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || c == '-') {
      identifier += c;
    } else {
      identifier += '_' + (c == '_' ? "_" : HexDigits(byte));
    }
  }
  return identifier;
}

}  // namespace fieldline::service
