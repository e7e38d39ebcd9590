#pragma once

#include "polling/text.h"
#include "tools/output/progress.h"

namespace fieldline::tool {

// Progress of a poll, with the bytes of a camera's picture received so far.
class PictureProgress final : public Progress {
 public:
  using Progress::Progress;

  void OnSerRead(const BYTE* data, int count) override;
  void OnSerWrite(const BYTE* data, int count) override;

 private:
  Bytes head_;                // of a streamed picture
  std::size_t received_ = 0;  // bytes of it
};

}  // namespace fieldline::tool
