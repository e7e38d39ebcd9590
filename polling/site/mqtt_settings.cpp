#include "polling/site/mqtt_settings.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "polling/site/duration.h"
#include "polling/text.h"

namespace fieldline {
namespace {

constexpr std::string_view kPlain = "mqtt://";
constexpr std::string_view kTls = "mqtts://";

// mqtt://HOST[:PORT], mqtts://HOST[:PORT]; an IPv6 address in brackets.
bool ParseUrl(std::string_view url, MqttSettings& settings) {
  constexpr int kMostPort = 65535;
  settings.tls = url.starts_with(kTls);
  if (!settings.tls && !url.starts_with(kPlain)) return false;
  url.remove_prefix(settings.tls ? kTls.size() : kPlain.size());
  if (url.ends_with('/')) url.remove_suffix(1);

  std::string_view port;
  const std::size_t colon = url.rfind(':');
  if (colon != std::string_view::npos && url.find(']', colon) == std::string_view::npos) {
    port = url.substr(colon + 1);
    url = url.substr(0, colon);
    const bool is_number = !port.empty() && port.find_first_not_of("0123456789") == std::string_view::npos;
    const long number = is_number ? ParseInteger(port).value_or(0) : 0;
    if (number < 1 || number > kMostPort) return false;
    settings.port = static_cast<int>(number);
  } else {
    settings.port = settings.tls ? 8883 : 1883;
  }
  if (url.starts_with('[') && url.ends_with(']')) {
    url = url.substr(1, url.size() - 2);
  } else if (url.find(':') != std::string_view::npos) {
    return false;
  }
  settings.host = url;
  return !url.empty() && std::ranges::all_of(url, [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '.' || c == '-' || c == '_' || c == ':';
  });
}

std::string ReadTopic(const JsonNode& node) {
  constexpr std::size_t kMost = 100;
  std::string topic = node.Text();
  const bool is_fit =
      !topic.empty() && topic.size() <= kMost && topic.front() != '/' && topic.back() != '/' && topic.front() != '$' &&
      std::ranges::all_of(topic, [](unsigned char c) { return c > ' ' && c < 0x7F && c != '+' && c != '#'; });
  if (!is_fit) node.Refuse("a topic of 1 to 100 letters, digits and signs, without +, # and a slash at its ends");
  return topic;
}

std::string ReadFilePath(const JsonNode& node) {
  std::string path = node.Text();
  if (path.empty()) node.Refuse("the path of a file is needed");
  return path;
}

}  // namespace

Publish ReadPublish(const JsonNode& node) {
  const std::string text = node.Text();
  if (text != "every" && text != "change") node.RefuseAsNot("\"every\" or \"change\"");
  return text == "every" ? Publish::kEvery : Publish::kChange;
}

std::string MqttSettings::Url() const {
  const bool is_ipv6 = host.find(':') != std::string::npos;
  return std::string(tls ? kTls : kPlain) + (is_ipv6 ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

MqttSettings ReadMqttSettings(const JsonNode& node) {
  node.RequireObject({"url", "prefix", "user", "password_file", "ca_file", "discovery", "publish", "queue"});
  MqttSettings settings;
  const JsonNode url = node.Get("url");
  if (url.Text().find('@') != std::string::npos) {
    url.Refuse("a user and a password do not belong here: write \"user\" and \"password_file\"");
  }
  if (!ParseUrl(url.Text(), settings)) {
    url.Refuse("an address such as \"mqtts://broker.example:8883\" or \"mqtt://127.0.0.1\" is needed");
  }
  if (const auto prefix = node.Find("prefix")) settings.prefix = ReadTopic(*prefix);
  if (const auto user = node.Find("user")) settings.user = user->Text();
  if (const auto file = node.Find("password_file")) {
    settings.password_file = ReadFilePath(*file);
    if (settings.user.empty()) file->Refuse("\"user\" is needed beside it");
  }
  if (const auto file = node.Find("ca_file")) {
    settings.ca_file = ReadFilePath(*file);
    if (!settings.tls) file->Refuse("only with mqtts://");
  }
  if (const auto discovery = node.Find("discovery")) settings.discovery = ReadTopic(*discovery);
  if (const auto publish = node.Find("publish")) settings.publish = ReadPublish(*publish);
  if (const auto queue = node.Find("queue")) {
    const auto time = ParseDuration(queue->Text(), kTenYears);
    if (!time || *time < std::chrono::minutes(1)) queue->RefuseAsNot("a time from \"1m\" to \"3653d\"");
    settings.queue = *time;
  }
  return settings;
}

}  // namespace fieldline
