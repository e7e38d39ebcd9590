#pragma once

#include <cstdint>

#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// The kind of device that a driver polls.
enum ENUM_SERDATKIND : std::int32_t {
  SERDAT_NONE = 0,
  SERDAT_ELEC = 1,         // CSensorElec, power meter
  SERDAT_ONOFF = 2,        // CSensorOnoff, switch-input module
  SERDAT_UPS = 3,          // CSensorUps
  SERDAT_BATTERY = 4,      // CSensorBattery, battery monitor
  SERDAT_ENVIR = 5,        // CSensorEnvir, temperature and humidity probe
  SERDAT_LEAK = 6,         // CSensorLeak, water-leak controller
  SERDAT_AIRC = 7,         // CSensorAirc, air conditioner
  SERDAT_CYBERMATE = 8,    // CSensorCybermate, fixed-point monitoring unit
  SERDAT_DI = 9,           // CSensorDi, the unit's own digital inputs
  SERDAT_MONITOR = 10,     // CHubMonitor, serial display
  SERDAT_ALARM = 11,       // CHubAlarm, alarm controller
  SERDAT_CAMERA = 12,      // CSensorCamera, serial camera
  SERDAT_CARD_K = 14,      // CSensorCardK, card terminal
  SERDAT_CAMERA_3GE = 15,  // CSensorCamera3ge, second camera
  SERDAT_EMERSON = 16,     // CSensorEmerson
  SERDAT_DUAL_PROTO = 17,  // dual-protocol unit, only from the sensor factory
  SERDAT_POWER_UNIT = 18,  // power unit, only from the sensor factory
  SERDAT_ELEC_Y = 19,      // CSensorElecY, second power meter
};

// Base of every driver, of the alarm controller and of the display.
//
// A driver stores the decoded values in a record, which is directly after this base part. The application reads it
// through m_pData after a poll. Not thread-safe: one thread polls a driver at a time.
class FIELDLINE_API CSensorBase {
 public:
  CSensorBase(ENUM_SERDATKIND kind = SERDAT_NONE);  // NOLINT(google-explicit-constructor): {} makes one

  // Copies every member. A derived class must point m_pData at the copy's own record.
  CSensorBase(const CSensorBase&) = default;
  // Copies every member except m_pData, which keeps pointing at this object's own record. This is also true when only
  // the base part of a driver is assigned.
  CSensorBase& operator=(const CSensorBase& other);

  virtual ~CSensorBase();

  // Polls the device at bus address `addr` through `port`, which must not be null. Blocks until the exchange is over.
  // Returns 1 when the record holds the device's values. Returns 0 when the port is closed, the request was not sent,
  // or the reply was missing, short or damaged; each driver says what its record holds then. The base class polls
  // nothing and returns 0.
  virtual int GetData(ISerBase* port, int addr);

  ENUM_SERDATKIND GetKind() const { return m_eKind; }

  static constexpr int kCommandCapacity = 32;

  BYTE* m_pData = nullptr;       // the record; null for the alarm controller and the display
  BYTE m_byReserved = 0;         // for the application's own use
  BYTE m_abyReserved[100] = {};  // for the application's own use
  int m_nFlags = 0;              // one bit for each one-time query of the driver that has succeeded
  ENUM_SERDATKIND m_eKind;
  BYTE m_byCmd[kCommandCapacity] = {};  // the last request; CSensorCardK and CSensorCamera3ge do not use it

 protected:
  // Writes the Modbus RTU request for `count` registers, coils or inputs, starting at `reg`, into the command buffer.
  // Returns its length, 8. Sends nothing.
  int ModBusCmd(BYTE addr, BYTE func, WORD reg, WORD count);

  // Sends the first `length` bytes of the command buffer. Returns false unless the port took all of them.
  bool SendCommand(ISerBase* port, int length);
};

namespace fieldline {

// Low byte of a device address, as sent on the line.
constexpr BYTE DeviceAddress(int addr) { return static_cast<BYTE>(addr & 0xFF); }

// Base class of a driver with a record, which is zero until the first poll. A copy points at its own record.
template <class Record>
class RecordSensor : public CSensorBase {
 public:
  explicit RecordSensor(ENUM_SERDATKIND kind) : CSensorBase(kind) { PointAtRecord(); }
  RecordSensor(const RecordSensor& other) : CSensorBase(other), m_data(other.m_data) { PointAtRecord(); }
  RecordSensor& operator=(const RecordSensor& other) {
    CSensorBase::operator=(other);
    m_data = other.m_data;
    return *this;
  }

  Record m_data{};

 private:
  void PointAtRecord() { m_pData = reinterpret_cast<BYTE*>(&m_data); }
};

}  // namespace fieldline
