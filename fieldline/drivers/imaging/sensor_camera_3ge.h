#pragma once

#include "fieldline/drivers/imaging/camera_data.h"
#include "fieldline/sensor/sensor_base.h"

// Serial camera that streams its picture on "UG3#"; kind SERDAT_CAMERA_3GE. The factory does not create it: the
// application constructs it.
class FIELDLINE_API CSensorCamera3ge : public fieldline::RecordSensor<CAMERA_DATA> {
 public:
  CSensorCamera3ge();

  // Takes a picture and stores it as K<local time>.jpeg in the web server's image directory, which must exist. A
  // picture taken in the same second is overwritten. `addr` is not used, and a closed port looks like a camera that
  // does not answer. Returns 1 when the camera answered and the file was created, even when the picture is incomplete:
  // the record's length is the number of bytes in the file (low 16 bits).
  //
  // During the poll the record holds the length that the camera announced. It keeps that length when the file can't be
  // created; the picture is then read and dropped. When the camera does not answer correctly, the record stays as it
  // was.
  //
  // Lasts the full time-out of a 512-byte read, unless the picture's length is a multiple of 512.
  int GetData(ISerBase* port, int addr) override;
};
