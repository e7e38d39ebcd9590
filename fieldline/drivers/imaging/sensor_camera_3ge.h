#pragma once

#include "fieldline/drivers/imaging/camera_data.h"
#include "fieldline/sensor/sensor_base.h"

// Serial camera that streams its picture on "UG3#"; kind SERDAT_CAMERA_3GE. No factory makes it: the application
// constructs it.
class FIELDLINE_API CSensorCamera3ge : public fieldline::RecordSensor<CAMERA_DATA> {
 public:
  CSensorCamera3ge();

  // Takes a picture and stores it as K<local time>.jpeg in the web server's image directory, which must exist; a
  // picture of the same second is replaced. `addr` is not used, and a closed port shows as one that doesn't answer.
  // 1 when the camera has answered and the file was made, even when the picture is cut short: the record's length says
  // how many bytes the file has got (their low 16 bits).
  //
  // While the poll runs the record has the length that the camera announced, and keeps it when the file can't be made;
  // the picture is read and dropped then. A camera that does not answer as it should leaves the record as it was.
  //
  // Lasts the full time-out of a 512-byte read, unless the picture's length is a multiple of 512.
  int GetData(ISerBase* port, int addr) override;
};
