#pragma once

#include <chrono>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fieldline {

// A value of a JSON file, which must outlive it. A value of the wrong type or range is refused with a UsageError, which
// names the file, the position, such as /events/2/at, and what is needed there.
class JsonNode {
 public:
  JsonNode(const nlohmann::ordered_json& value, const std::string& file, std::string place)
      : value_(&value), file_(&file), place_(std::move(place)) {}

  [[noreturn]] void Refuse(const std::string& reason) const;
  [[noreturn]] void RefuseAsNot(const std::string& what_is_needed) const;

  // Refuses anything but an object with no other keys than these.
  void RequireObject(std::initializer_list<std::string_view> keys) const;

  // Members of an object.
  JsonNode Get(std::string_view key) const;
  std::optional<JsonNode> Find(std::string_view key) const;
  std::vector<std::pair<std::string, JsonNode>> Members() const;

  // Elements of an array.
  std::vector<JsonNode> Elements() const;

  std::string Text() const;
  bool Flag() const;
  double Number(double low, double high) const;
  long Integer(long low, long high) const;
  std::chrono::milliseconds Duration() const;  // 250, "250ms" or "5m", up to a day

  const nlohmann::ordered_json& value() const { return *value_; }

 private:
  const nlohmann::ordered_json* value_;
  const std::string* file_;
  std::string place_;
};

class JsonFile {
 public:
  // Throws UsageError when the file can't be read, has more than 1 MiB or is not JSON (with line and column), and for a
  // number out of range, a duplicate key and more than 64 levels.
  explicit JsonFile(std::string path);

  JsonNode Root() const { return {document_, path_, ""}; }

 private:
  const std::string path_;
  nlohmann::ordered_json document_;
};

}  // namespace fieldline
