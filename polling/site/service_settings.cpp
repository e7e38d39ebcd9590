#include "polling/site/service_settings.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "polling/site/duration.h"
#include "polling/text.h"

namespace fieldline {
namespace {

// A unit's name becomes a part of topics, labels and file names.
std::string ReadUnit(const JsonNode& node) {
  constexpr std::size_t kMost = 64;
  constexpr auto is_allowed = [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '_' || c == '.'; };
  std::string name = node.Text();
  if (name.empty() || name.size() > kMost || !std::ranges::all_of(name, is_allowed)) {
    node.Refuse("the name of a unit has 1 to 64 letters, digits, dots, dashes and underscores");
  }
  return name;
}

std::chrono::milliseconds ReadKeep(const JsonNode& node) {
  const auto keep = ParseDuration(node.Text(), kTenYears);
  if (!keep || *keep < std::chrono::hours(1)) node.RefuseAsNot("a time from \"1h\" to \"3653d\"");
  return *keep;
}

// "500MB", "1GB".
std::optional<std::uint64_t> ParseSize(std::string_view text) {
  constexpr struct {
    std::string_view name;
    long bytes;
  } kUnits[] = {
      {"MB", 1'000'000    },
      {"GB", 1'000'000'000}
  };
  constexpr long kLeast = 10'000'000;
  constexpr long long kMost = 1'000'000'000'000;
  for (const auto& [name, bytes] : kUnits) {
    if (!text.ends_with(name)) continue;
    const auto number = ParseInteger(text.substr(0, text.size() - name.size()));
    if (!number || *number < 1 || *number > kMost / bytes) return std::nullopt;
    const auto size = static_cast<std::uint64_t>(*number) * static_cast<std::uint64_t>(bytes);
    return size < kLeast ? std::nullopt : std::optional(size);
  }
  return std::nullopt;
}

HistorySettings ReadHistory(const JsonNode& node) {
  node.RequireObject({"keep", "size"});
  HistorySettings settings;
  if (const auto keep = node.Find("keep")) settings.keep = ReadKeep(*keep);
  if (const auto size = node.Find("size")) {
    const auto bytes = ParseSize(size->Text());
    if (!bytes) size->RefuseAsNot("a size from \"10MB\" to \"1000GB\"");
    settings.size = *bytes;
  }
  return settings;
}

PictureSettings ReadPictures(const JsonNode& node) {
  constexpr long kMostPictures = 100'000;
  node.RequireObject({"keep", "most"});
  PictureSettings settings;
  if (const auto keep = node.Find("keep")) settings.keep = ReadKeep(*keep);
  if (const auto most = node.Find("most")) settings.most = static_cast<std::size_t>(most->Integer(1, kMostPictures));
  return settings;
}

}  // namespace

ServiceSettings ReadServiceSettings(const JsonNode& root) {
  ServiceSettings settings;
  if (const auto unit = root.Find(kUnitKey)) settings.unit = ReadUnit(*unit);
  if (const auto history = root.Find(kHistoryKey)) settings.history = ReadHistory(*history);
  if (const auto pictures = root.Find(kPicturesKey)) settings.pictures = ReadPictures(*pictures);
  if (const auto http = root.Find(kHttpKey)) settings.http = ReadHttpSettings(*http);
  if (const auto mqtt = root.Find(kMqttKey)) {
    settings.mqtt = ReadMqttSettings(*mqtt);
    if (!root.Find(kUnitKey)) mqtt->Refuse("\"unit\" is needed beside it: the broker knows this unit by its name");
  }
  return settings;
}

}  // namespace fieldline
