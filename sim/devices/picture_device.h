#pragma once

#include "sim/device.h"

namespace fieldline::sim {

// What both cameras have in common: they look at a clock, or always show the same picture.
class PictureDevice : public Device {
 public:
  PictureDevice();

  // Every picture is this one from now on, whatever the size that is set. False unless it is a JPEG file of at most
  // 65535 bytes. Before the line runs.
  bool Show(Bytes picture);

 protected:
  Bytes TakePicture();

 private:
  Bytes shown_;
};

}  // namespace fieldline::sim
