#include "polling/site/json_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "polling/site/duration.h"
#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {
namespace {

using nlohmann::ordered_json;

// The parser keeps the last of two members of one name without a word.
class DuplicateKeys {
 public:
  explicit DuplicateKeys(const std::string& file) : file_(file) {}

  bool operator()(int, ordered_json::parse_event_t event, const ordered_json& parsed) {
    if (event == ordered_json::parse_event_t::object_start) {
      open_.emplace_back();
    } else if (event == ordered_json::parse_event_t::object_end) {
      open_.pop_back();
    } else if (event == ordered_json::parse_event_t::key) {
      if (!open_.back().insert(parsed.get<std::string>()).second) {
        throw UsageError(file_ + ": " + parsed.dump() + " stands twice in one object");
      }
    }
    return true;
  }

 private:
  const std::string& file_;
  std::vector<std::set<std::string>> open_;
};

std::string Shortened(const ordered_json& value) {
  constexpr std::size_t kMost = 40;
  const std::string text = value.dump(-1, ' ', true);
  return text.size() <= kMost ? text : text.substr(0, kMost) + "...";
}

}  // namespace

void JsonNode::Refuse(const std::string& reason) const {
  throw UsageError(*file_ + ": " + (place_.empty() ? "/" : place_) + ": " + reason);
}

void JsonNode::RefuseAsNot(const std::string& what) const { Refuse(what + " is needed, not " + Shortened(*value_)); }

void JsonNode::RequireObject(std::initializer_list<std::string_view> keys) const {
  for (const auto& [key, member] : Members()) {
    if (std::ranges::find(keys, key) != keys.end()) continue;
    member.Refuse("there is no such key; the keys are " + Join(std::vector<std::string>(keys.begin(), keys.end())));
  }
}

JsonNode JsonNode::Get(std::string_view key) const {
  if (const std::optional<JsonNode> member = Find(key)) return *member;
  Refuse("\"" + std::string(key) + "\" is missing");
}

std::optional<JsonNode> JsonNode::Find(std::string_view key) const {
  if (!value_->is_object()) RefuseAsNot("an object");
  const auto found = value_->find(std::string(key));
  if (found == value_->end()) return std::nullopt;
  return JsonNode(*found, *file_, place_ + "/" + std::string(key));
}

std::vector<std::pair<std::string, JsonNode>> JsonNode::Members() const {
  if (!value_->is_object()) RefuseAsNot("an object");
  std::vector<std::pair<std::string, JsonNode>> members;
  for (const auto& [key, value] : value_->items()) {
    members.emplace_back(key, JsonNode(value, *file_, place_ + "/" + key));
  }
  return members;
}

std::vector<JsonNode> JsonNode::Elements() const {
  if (!value_->is_array()) RefuseAsNot("an array");
  std::vector<JsonNode> elements;
  for (const ordered_json& value : *value_) {
    elements.emplace_back(value, *file_, place_ + "/" + std::to_string(elements.size()));
  }
  return elements;
}

std::string JsonNode::Text() const {
  if (!value_->is_string()) RefuseAsNot("a text");
  return value_->get<std::string>();
}

bool JsonNode::Flag() const {
  if (!value_->is_boolean()) RefuseAsNot("true or false");
  return value_->get<bool>();
}

double JsonNode::Number(double low, double high) const {
  const double number = value_->is_number() ? value_->get<double>() : low - 1;
  if (!(number >= low && number <= high)) {
    RefuseAsNot("a number from " + ordered_json(low).dump() + " to " + ordered_json(high).dump());
  }
  return number;
}

long JsonNode::Integer(long low, long high) const {
  // Text, since the library's own conversion wraps what is too large.
  const std::optional<long> number = value_->is_number_integer() ? ParseInteger(value_->dump()) : std::nullopt;
  if (!number || *number < low || *number > high) {
    RefuseAsNot("a whole number from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return *number;
}

std::chrono::milliseconds JsonNode::Duration() const {
  const auto duration = ParseDuration(value_->is_string() ? value_->get<std::string>() : value_->dump());
  if (!duration) RefuseAsNot("a time (" + std::string(kDurationForm) + ")");
  return *duration;
}

JsonFile::JsonFile(std::string path) : path_(std::move(path)) {
  std::ifstream file(path_, std::ios::binary);
  if (!file || std::filesystem::is_directory(path_)) throw UsageError(path_ + ": the file can't be read");
  try {
    document_ = ordered_json::parse(file, DuplicateKeys(path_));
  } catch (const ordered_json::parse_error& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..."
    const std::string reason = error.what();
    throw UsageError(path_ + ": " + reason.substr(reason.find("] ") + 2));
  }
}

}  // namespace fieldline
