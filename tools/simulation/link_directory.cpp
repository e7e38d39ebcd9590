#include "tools/simulation/link_directory.h"

#include <fstream>
#include <system_error>

#include "tools/verbs/verb.h"

namespace fieldline::tool {

namespace fs = std::filesystem;

namespace {

constexpr char kList[] = ".fieldline-links";
constexpr char kHeading[] = "Links made by fieldline sim, and their targets";

}  // namespace

LinkDirectory::LinkDirectory(const fs::path& directory) {
  const auto refuse = [&](const std::string& why) {
    throw UsageError("--links \"" + directory.string() + "\": " + why);
  };
  std::error_code error;
  made_ = fs::create_directories(directory, error);
  if (!error) directory_ = fs::canonical(directory, error);
  if (error) refuse("the directory can't be created: " + error.message());
  if (!fs::is_directory(directory_)) refuse("this is no directory");
  error = lock_.Take(directory_.string());
  if (error == std::errc::operation_would_block) {
    refuse("another simulator uses this directory; end it, or choose another directory");
  }
  if (error) refuse("the directory can't be locked: " + error.message());
  BeginList();
}

void LinkDirectory::BeginList() {
  const fs::path path = directory_ / kList;
  RequireFree(kList);
  {
    std::ifstream list(path);
    std::string name;
    std::string target;
    std::getline(list, name);  // the heading
    // The directory was not locked, so the simulator that made these links was killed.
    while (std::getline(list, name, ' ') && std::getline(list, target)) RemoveLink(name, target);
  }
  clean_up_.emplace([this] { Remove(); });
  if (const std::error_code error = list_.Open(path.string(), LineFile::Mode::kNew)) {
    throw UsageError("\"" + path.string() + "\" can't be written: " + error.message());
  }
  list_.Append(std::string(kHeading) + '\n');
}

void LinkDirectory::RequireFree(std::string_view name) const {
  const fs::path path = directory_ / name;
  std::error_code error;
  const fs::file_type type = fs::symlink_status(path, error).type();
  if (type == fs::file_type::not_found) return;
  if (name == kList && type == fs::file_type::regular) {
    std::ifstream list(path);
    std::string line;
    if (std::getline(list, line) && line == kHeading) return;
  }
  throw UsageError("\"" + path.string() +
                   "\" exists, and no simulator made it; remove it, or choose another directory");
}

bool LinkDirectory::Point(std::string_view name, const std::string& target) {
  const std::lock_guard lock(mutex_);
  if (removed_) return true;
  const std::string link(name);
  if (const auto former = links_.extract(link)) RemoveLink(link, former.mapped());
  if (target.empty()) return true;
  list_.Append(link + ' ' + target + '\n');
  std::error_code error;
  fs::create_symlink(target, directory_ / link, error);
  if (!error) links_[link] = target;
  return !error;
}

// Removes the link only if its target is unchanged: somebody may have replaced it with a link of their own.
void LinkDirectory::RemoveLink(const std::string& name, const std::string& target) const {
  const fs::path link = directory_ / fs::path(name).filename();
  std::error_code error;
  if (fs::read_symlink(link, error) == target && !error) fs::remove(link, error);
}

void LinkDirectory::Remove() {
  const std::lock_guard lock(mutex_);
  removed_ = true;
  for (const auto& [link, target] : links_) RemoveLink(link, target);
  std::error_code ignored;
  fs::remove(directory_ / kList, ignored);
  if (made_) fs::remove(directory_, ignored);
}

}  // namespace fieldline::tool
