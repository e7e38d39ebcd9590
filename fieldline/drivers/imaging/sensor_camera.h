#pragma once

#include <span>

#include "fieldline/drivers/imaging/camera_data.h"
#include "fieldline/sensor/sensor_base.h"

// Serial camera with the command set of the VC0706; kind SERDAT_CAMERA.
class FIELDLINE_API CSensorCamera : public fieldline::RecordSensor<CAMERA_DATA> {
 public:
  CSensorCamera();

  // Resets the camera, takes a picture and stores it as <local time>.JPEG in the web server's image directory, which
  // must exist; a picture of the same second is replaced. `addr` is not used. 1 when a whole picture of at most 65535
  // bytes has come, even when its file can't be made or filled; also 0 when memory for it (100 KiB) is short.
  //
  // A reply that is not the right one is asked for again, four times; silence ends the poll. The length is written when
  // the camera has announced it, the name when the picture has come: a picture that fails leaves the name before it.
  //
  // Four of the exchanges last the full time-out of a 20-byte read, since the camera's replies have 5 and 9.
  int GetData(ISerBase* port, int addr) override;

 private:
  // Sends the command and reads `ask` bytes into `reply`, up to five times, until `matches` accepts what came, given
  // the number of bytes received. False at once when the command is not sent whole or nothing comes.
  template <class Matches>
  bool Exchange(ISerBase* port, std::span<const BYTE> command, BYTE* reply, int ask, Matches matches);
};
