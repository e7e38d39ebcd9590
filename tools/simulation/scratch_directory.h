#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "tools/simulation/clean_up.h"

namespace fieldline::tool {

// An empty directory for temporary files; it goes with the object, whatever was put in it.
class ScratchDirectory {
 public:
  ScratchDirectory() = default;
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  static std::filesystem::path Make() {
    std::random_device random;
    std::filesystem::path path;
    do {
      path = std::filesystem::temp_directory_path() / ("fieldline-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path));
    return path;
  }

  // Again when a file was added meanwhile.
  void Remove() const {
    std::error_code error;
    for (int attempts = 3; attempts > 0; --attempts) {
      std::filesystem::remove_all(path_, error);
      if (!error) return;
    }
  }

  const std::filesystem::path path_ = Make();
  const CleanUp clean_up_{[this] { Remove(); }};
};

}  // namespace fieldline::tool
