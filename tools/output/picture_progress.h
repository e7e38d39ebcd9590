#pragma once

#include "polling/text.h"
#include "tools/output/progress.h"

namespace fieldline::tool {

// The progress of a poll, which tells how a camera's picture comes in.
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
