#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "polling/site/service_settings.h"
#include "polling/text.h"

namespace fieldline::service {

// A picture that is kept.
struct Picture {
  std::string time;  // when it was taken: 2026-05-17T13:45:00.123Z
  std::uintmax_t size;
  std::filesystem::path path;
};

// The pictures of all cameras, each camera's in a directory of its own. Files are numbered, so that their order holds
// even when the clock is set. One thread at a time may keep a picture; all else may be called at any time.
class PictureShelf {
 public:
  PictureShelf(std::filesystem::path directory, const PictureSettings& settings)
      : directory_(std::move(directory)), settings_(settings) {}

  // Moves the picture in `file` to the shelf, and removes the camera's first ones when there are too many. Returns the
  // picture's new path. Throws std::filesystem::filesystem_error.
  std::string Keep(const std::string& camera, Time time, const std::filesystem::path& file) const;

  // Removes what is too old at this time, also of cameras that the site has no more.
  void RemoveOld(Time now) const;

  // At most so many pictures of a camera, the latest first.
  std::vector<Picture> List(const std::string& camera, std::size_t most) const;

  // The bytes of the picture of that time, or the latest when `time` is empty. Nothing when there is none.
  std::optional<std::string> Read(const std::string& camera, const std::string& time) const;

 private:
  std::filesystem::path DirectoryOf(const std::string& camera) const;

  const std::filesystem::path directory_;
  const PictureSettings settings_;
};

}  // namespace fieldline::service
