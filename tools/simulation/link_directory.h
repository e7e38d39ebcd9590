#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace fieldline::tool {

// A directory of links that stay where they are while what they point to comes and goes.
class LinkDirectory {
 public:
  // Makes the directory if there is none. Throws UsageError when it can't.
  explicit LinkDirectory(const std::filesystem::path& directory);

  // Removes its links, and the directory if it was made here and nothing else is in it.
  ~LinkDirectory();

  LinkDirectory(const LinkDirectory&) = delete;
  LinkDirectory& operator=(const LinkDirectory&) = delete;

  // Throws UsageError when something that is no link has this name.
  void RequireFree(std::string_view name) const;

  // Points the link to `target`, at once; an empty target removes it. A link that is there already is replaced.
  void Point(std::string_view name, const std::string& target);

  std::string Path(std::string_view name) const { return (directory_ / name).string(); }

 private:
  std::filesystem::path directory_;
  bool made_ = false;
  std::map<std::filesystem::path, std::string> links_;  // where each points to
};

}  // namespace fieldline::tool
