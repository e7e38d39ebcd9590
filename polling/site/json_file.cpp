#include "polling/site/json_file.h"

#include <algorithm>
#include <set>

#include "polling/read_file.h"
#include "polling/site/duration.h"
#include "polling/text.h"
#include "polling/usage_error.h"

namespace fieldline {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kMostBytes = 1 << 20;
constexpr std::size_t kDeepest = 64;

std::string Start(const std::string& text) {
  constexpr std::size_t kMost = 40;
  return text.size() <= kMost ? text : text.substr(0, kMost) + "...";
}

// Refuses what the parser accepts or explains badly: duplicate keys, of which it silently keeps the last, nesting so
// deep that walking it exhausts the stack, and numbers out of range.
class Checker final : public nlohmann::json_sax<ordered_json> {
 public:
  Checker(const std::string& file, std::string_view text) : file_(file), text_(text) {}

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return Begin(); }
  bool end_object() override { return End(); }
  bool start_array(std::size_t) override { return Begin(); }
  bool end_array() override { return End(); }

  bool key(string_t& name) override {
    const bool is_new = levels_.back().keys.insert(name).second;
    if (!is_new) throw UsageError(file_ + ": " + Place() + ": duplicate key \"" + name + '"');
    levels_.back().last = name;
    return true;
  }

  bool parse_error(std::size_t position, const std::string& token, const nlohmann::detail::exception& error) override {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..."
    const std::string reason = error.what();
    if (reason.starts_with("[json.exception.parse_error")) {
      throw UsageError(file_ + ": " + reason.substr(reason.find("] ") + 2));
    }
    const std::string_view before = text_.substr(0, position);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    throw UsageError(file_ + ": line " + std::to_string(line) + ": the number " + Start(token) + " is out of range");
  }

 private:
  struct Level {
    std::set<std::string> keys;  // empty for an array
    std::string last;
  };

  bool Begin() {
    levels_.emplace_back();
    if (levels_.size() <= kDeepest) return true;
    throw UsageError(file_ + ": " + Start(Place()) + ": more than " + std::to_string(kDeepest) +
                     " objects and arrays lie in one another");
  }

  bool End() {
    levels_.pop_back();
    return true;
  }

  // The keys from the root to the innermost object.
  std::string Place() const {
    std::string place;
    for (const Level& level : levels_) {
      if (!level.last.empty() && &level != &levels_.back()) place += '/' + level.last;
    }
    return place.empty() ? "/" : place;
  }

  const std::string& file_;
  const std::string_view text_;
  std::vector<Level> levels_;
};

}  // namespace

void JsonNode::Refuse(const std::string& reason) const {
  throw UsageError(*file_ + ": " + (place_.empty() ? "/" : place_) + ": " + reason);
}

void JsonNode::RefuseAsNot(const std::string& what_is_needed) const {
  Refuse(what_is_needed + " is needed, not " + Start(value_->dump(-1, ' ', true)));
}

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
  // Converted from text, because the JSON library's own conversion wraps numbers that are too large.
  const std::optional<long> number = value_->is_number_integer() ? ParseInteger(value_->dump()) : std::nullopt;
  if (!number || *number < low || *number > high) {
    RefuseAsNot("a whole number from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return *number;
}

std::chrono::milliseconds JsonNode::Duration() const {
  const auto duration = ParseDuration(value_->is_string() ? value_->get<std::string>() : value_->dump(), kDay);
  if (!duration) RefuseAsNot("a time (" + std::string(kDurationForm) + ", up to a day)");
  return *duration;
}

JsonFile::JsonFile(std::string path) : path_(std::move(path)) {
  const std::string text = ReadFile(path_, kMostBytes);
  Checker checker(path_, text);
  ordered_json::sax_parse(text, &checker);
  document_ = ordered_json::parse(text);
}

}  // namespace fieldline
