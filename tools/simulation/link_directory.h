#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "fieldline/platform/directory_lock.h"
#include "polling/line_file.h"
#include "tools/simulation/clean_up.h"

namespace fieldline::tool {

// A directory of links that stay where they are while what they point to comes and goes. It belongs to one simulator at
// a time, and nothing in it is touched but links that a simulator made. Each is written to a list in the directory
// before it is made. So the next simulator knows those of one that was killed, and removes them.
class LinkDirectory {
 public:
  // Makes the directory if there is none. Throws UsageError when it can't, and when another simulator has it.
  explicit LinkDirectory(const std::filesystem::path& directory);

  // Its end removes its links, and the directory if it was made here and nothing else is in it.
  LinkDirectory(const LinkDirectory&) = delete;
  LinkDirectory& operator=(const LinkDirectory&) = delete;

  // Throws UsageError when something has this name that no simulator made.
  void RequireFree(std::string_view name) const;

  // Points the link to `target`, at once; an empty target removes it. False when something else has taken its name.
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
  std::map<std::string, std::string> links_;  // where each points to
  std::optional<CleanUp> clean_up_;
};

}  // namespace fieldline::tool
