#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "fieldline/platform/directory_lock.h"
#include "polling/line_file.h"
#include "sim/clean_up.h"

namespace fieldline::tool {

// A directory of links with fixed names, whose targets may change. One simulator uses it at a time, and changes only
// links that a simulator made: each link is first written to a list in the directory, so that the next simulator can
// remove the links of one that was killed.
class LinkDirectory {
 public:
  // Creates the directory if needed. Throws UsageError when that fails, or when another simulator uses the directory.
  explicit LinkDirectory(const std::filesystem::path& directory);

  // The destructor removes its links, and the directory if the constructor created it and it is empty.
  LinkDirectory(const LinkDirectory&) = delete;
  LinkDirectory& operator=(const LinkDirectory&) = delete;

  // Throws UsageError when the name is taken by something that no simulator made.
  void RequireFree(std::string_view name) const;

  // Points the link to `target` in one step; an empty target removes the link. Returns false when something else has
  // taken its name.
  bool Point(std::string_view name, const std::string& target);

  std::string Path(std::string_view name) const { return (directory_ / name).string(); }

 private:
  void BeginList();
  void RemoveLink(const std::string& name, const std::string& target) const;
  void Remove();

  std::filesystem::path directory_;
  bool made_ = false;
  DirectoryLock lock_;
  std::mutex mutex_;  // of all below
  bool removed_ = false;
  LineFile list_;
  std::map<std::string, std::string> links_;  // target of each
  std::optional<sim::CleanUp> clean_up_;
};

}  // namespace fieldline::tool
