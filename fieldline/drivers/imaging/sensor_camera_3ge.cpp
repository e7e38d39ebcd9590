#include "fieldline/drivers/imaging/sensor_camera_3ge.h"

#include <cstring>

#include "fieldline/drivers/imaging/snapshot_name.h"
#include "fieldline/platform/file.h"
#include "fieldline/platform/text.h"
#include "fieldline/sensor/modbus.h"

namespace {

//  to the camera    55 47 33 23                               UG3#
//  from the camera  55 47 23  55 50 00 10  00     FF D8 ...   UG#, UP, length 4096, a spare byte, the picture
constexpr BYTE kRequest[] = {'U', 'G', '3', '#'};
constexpr BYTE kAcknowledgement[] = {'U', 'G', '#'};
constexpr BYTE kLengthMark[] = {'U', 'P'};
constexpr int kHeadLength = 4;  // the mark, and the picture's length, low byte first
constexpr int kSpareLength = 1;
constexpr int kBlockLength = 512;

}  // namespace

CSensorCamera3ge::CSensorCamera3ge() : RecordSensor(SERDAT_CAMERA_3GE) {}

int CSensorCamera3ge::GetData(ISerBase* port, int) {
  port->Write(kRequest, sizeof kRequest);

  BYTE block[kBlockLength];
  if (port->Read(block, sizeof kAcknowledgement) != sizeof kAcknowledgement) return 0;
  if (std::memcmp(block, kAcknowledgement, sizeof kAcknowledgement) != 0) return 0;
  if (port->Read(block, kHeadLength) != kHeadLength) return 0;
  if (std::memcmp(block, kLengthMark, sizeof kLengthMark) != 0) return 0;
  const WORD announced = GetWordLE(block + sizeof kLengthMark);
  port->Read(block, kSpareLength);

  const fieldline::SnapshotName snapshot(u"K", u".jpeg");
  fieldline::Utf16ToUtf8(snapshot.name(), m_data.name, sizeof m_data.name);
  m_data.length = announced;

  fieldline::File file;
  const bool created = file.Create(snapshot.path());
  int stored = 0;
  // The picture is read even without a file. Left on the line, it would be taken for the reply to the next poll.
  for (int remaining = announced; remaining > 0;) {
    const int received = port->Read(block, kBlockLength);
    if (received <= 0) break;
    remaining -= received;
    const int written = file.Write(block, received);
    if (written > 0) stored += written;
  }
  file.Close();
  if (!created) return 0;
  m_data.length = static_cast<WORD>(stored & 0xFFFF);
  return 1;
}
