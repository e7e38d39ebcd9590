#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "fieldline/serial/i_ser_observer.h"

namespace fieldline::tool {

// Shows how a camera's picture comes in, on one line of a terminal that is written over and cleared in the end.
class PictureProgress : public ISerObserver {
 public:
  explicit PictureProgress(std::ostream& out) : out_(out) {}

  void OnSerRead(const BYTE* data, int count) override;
  void OnSerWrite(const BYTE* data, int count) override;

  // After each poll.
  void Clear();

 private:
  void Show(const std::string& text);

  std::ostream& out_;
  bool streams_ = false;   // the picture comes in blocks
  int reads_ = 0;          // since the request
  int announced_ = 0;      // bytes of the picture
  int received_ = 0;       // of them
  std::size_t shown_ = 0;  // characters on the line
};

}  // namespace fieldline::tool
