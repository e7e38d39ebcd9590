#pragma once

#include <mutex>
#include <string>

#include "polling/poller.h"
#include "polling/site/site.h"
#include "service/picture/picture_shelf.h"

namespace fieldline::service {

// Takes pictures, from any thread and one at a time: the library stores all pictures in one directory and names them
// after the second, so that two cameras at once could get each other's.
class PictureTaker {
 public:
  // The library's flash root becomes a directory below `directory`. `shelf` must outlive this.
  PictureTaker(const std::string& directory, const PictureShelf& shelf)
      : incoming_(directory + "/incoming"), shelf_(shelf) {}

  struct Taken {
    PollResult result;
    std::string path;  // empty after a failure
  };

  // Opens the camera's line for as long as it takes.
  Taken Take(const SiteLine& camera);

 private:
  std::optional<Failure> MakeRoom() const;

  const std::string incoming_;
  const PictureShelf& shelf_;
  std::mutex mutex_;
};

}  // namespace fieldline::service
