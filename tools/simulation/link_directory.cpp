#include "tools/simulation/link_directory.h"

#include <system_error>

#include "tools/verbs/verb.h"

namespace fieldline::tool {

namespace fs = std::filesystem;

LinkDirectory::LinkDirectory(const fs::path& directory) {
  std::error_code error;
  made_ = fs::create_directories(directory, error);
  if (!error) directory_ = fs::canonical(directory, error);
  if (error || !fs::is_directory(directory_)) {
    throw UsageError("the directory \"" + directory.string() + "\" can't be made" +
                     (error ? ": " + error.message() : std::string()));
  }
}

LinkDirectory::~LinkDirectory() {
  std::error_code ignored;
  for (const auto& [link, target] : links_) {
    // Another simulation may have taken the link over.
    if (fs::read_symlink(link, ignored) == target) fs::remove(link, ignored);
  }
  if (made_) fs::remove(directory_, ignored);
}

void LinkDirectory::RequireFree(std::string_view name) const {
  std::error_code error;
  const fs::file_type type = fs::symlink_status(directory_ / name, error).type();
  if (type == fs::file_type::not_found || type == fs::file_type::symlink) return;
  throw UsageError("\"" + Path(name) + "\" exists and is no link; remove it, or choose another directory");
}

void LinkDirectory::Point(std::string_view name, const std::string& target) {
  const fs::path link = directory_ / name;
  links_[link] = target;
  if (target.empty()) {
    fs::remove(link);
    return;
  }
  // Renamed into place, so that whoever opens the link meanwhile finds the old one or the new one.
  const fs::path next = link.string() + ".new";
  fs::remove(next);
  fs::create_symlink(target, next);
  fs::rename(next, link);
}

}  // namespace fieldline::tool
