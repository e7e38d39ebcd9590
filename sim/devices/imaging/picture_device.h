#pragma once

#include "sim/device.h"

namespace fieldline::sim {

// Base class of both cameras. A picture shows the date and the time, or is always the one given to Show.
class PictureDevice : public Device {
 public:
  PictureDevice();

  // Uses this file for every picture; the value `size` then has no effect. Returns false unless it is a JPEG file of at
  // most 65535 bytes. Call it before the line starts.
  bool Show(Bytes picture);

 protected:
  Bytes TakePicture();

 private:
  Bytes shown_;
};

}  // namespace fieldline::sim
