#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "sim/clean_up.h"

namespace fieldline::sim {

// A directory for temporary files. The destructor removes it with its contents.
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

  // Repeated when a file is added during the removal.
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

}  // namespace fieldline::sim
