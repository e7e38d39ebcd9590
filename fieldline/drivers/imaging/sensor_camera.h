#pragma once

#include <span>

#include "fieldline/drivers/imaging/camera_data.h"
#include "fieldline/sensor/sensor_base.h"

// Serial camera with the command set of the VC0706; kind SERDAT_CAMERA.
class FIELDLINE_API CSensorCamera : public fieldline::RecordSensor<CAMERA_DATA> {
 public:
  CSensorCamera();

  // Resets the camera, takes a picture and stores it as <local time>.JPEG in the web server's image directory, which
  // must exist. A picture taken in the same second is overwritten. `addr` is not used. Returns 1 when a whole picture
  // of at most 65535 bytes was received, even when its file can't be created or fully written. Returns 0 otherwise,
  // also when there is no memory for the picture (100 KiB).
  //
  // A wrong reply is requested again, up to four times. When there is no reply, the poll ends. The length is written
  // when the camera has announced it, the name when the whole picture was received: a failed picture leaves the
  // previous name.
  //
  // Four of the exchanges last the full time-out of a 20-byte read, because the camera's replies have 5 or 9 bytes.
  int GetData(ISerBase* port, int addr) override;

 private:
  // Sends the command and reads `ask` bytes into `reply`, up to five times, until `matches` accepts the reply; it is
  // given the number of bytes received. Returns false at once when the command is not fully sent or nothing is
  // received.
  template <class Matches>
  bool Exchange(ISerBase* port, std::span<const BYTE> command, BYTE* reply, int ask, Matches matches);
};
