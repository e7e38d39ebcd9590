#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace fieldline {

// An empty directory that goes with the object, whatever was put in it.
class TempDirectory {
 public:
  TempDirectory() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("fieldline-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TempDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  std::string Path(const std::string& below) const { return (path_ / below).string(); }

  void WriteFile(const std::string& below, const std::string& content) const {
    std::ofstream(path_ / Utf8(below), std::ios::binary) << content;
  }
  std::string ReadFile(const std::string& below) const {
    std::ifstream file(path_ / Utf8(below), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static std::filesystem::path Utf8(const std::string& text) { return std::u8string(text.begin(), text.end()); }

  std::filesystem::path path_;
};

}  // namespace fieldline
