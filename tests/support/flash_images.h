#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "fieldline/platform/file.h"
#include "tests/support/temp_directory.h"

namespace fieldline::test {

// A flash file system of its own while it lives, with an empty image directory.
class FlashImages {
 public:
  FlashImages() {
    std::filesystem::create_directories(Path());
    SetFlashRoot(root_.Path().string().c_str());
  }
  ~FlashImages() { SetFlashRoot(nullptr); }

  std::filesystem::path Path() const { return root_.Path() / "NandFlash" / "www" / "wwwpub" / "images"; }
  std::string Read(const std::string& name) const { return root_.ReadFile((Path() / name).string()); }
  bool IsEmpty() const { return std::filesystem::is_empty(Path()); }

  void RemoveDirectory() const { std::filesystem::remove_all(Path()); }
  // In place of a picture: a device that takes no byte. False where the system has none.
  bool MakeFull(const std::string& name) const {
    std::error_code none;
    if (std::filesystem::exists("/dev/full")) std::filesystem::create_symlink("/dev/full", Path() / name, none);
    return std::filesystem::exists(Path() / name, none);
  }

 private:
  TempDirectory root_;
};

}  // namespace fieldline::test
