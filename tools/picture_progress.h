#pragma once

#include "tools/progress.h"

namespace fieldline::tool {

// The progress of a poll, which tells how a camera's picture comes in.
class PictureProgress final : public Progress {
 public:
  using Progress::Progress;

  void OnSerRead(const BYTE* data, int count) override;
  void OnSerWrite(const BYTE* data, int count) override;

 private:
  bool streams_ = false;  // the picture comes in blocks
  int reads_ = 0;         // since the request
  int announced_ = 0;     // bytes of the picture
  int received_ = 0;      // of them
};

}  // namespace fieldline::tool
