#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace fieldline::tool {

// An empty directory for temporary files; it goes with the object, whatever was put in it.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("fieldline-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace fieldline::tool
