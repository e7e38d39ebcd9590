#pragma once

#include <cstdint>

#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// What kind of device a driver polls.
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
  SERDAT_DUAL_PROTO = 17,  // dual-protocol unit, from the sensor factory only
  SERDAT_POWER_UNIT = 18,  // power unit, from the sensor factory only
  SERDAT_ELEC_Y = 19,      // CSensorElecY, second power meter
};

// Base of every driver, of the alarm controller and of the display.
//
// A driver keeps its decoded values in a record that stands directly behind this base part; the application reads it
// through m_pData after a poll. One thread polls a driver at a time.
class FIELDLINE_API CSensorBase {
 public:
  CSensorBase(ENUM_SERDATKIND kind = SERDAT_NONE);  // NOLINT(google-explicit-constructor): {} makes one

  // Member by member; a derived class aims m_pData at the copy's own record.
  CSensorBase(const CSensorBase&) = default;
  // Copies all but m_pData, which goes on pointing at this object's own record, also when only the base part of a
  // driver is assigned.
  CSensorBase& operator=(const CSensorBase& other);

  virtual ~CSensorBase();

  // Polls the device at bus address `addr` through `port`, which must not be null; blocks for the exchange. 1 when the
  // record holds the device's values. 0 when the port is closed, the request was not sent, or the reply was missing,
  // short or damaged; each driver says what its record holds then. The base polls nothing and returns 0.
  virtual int GetData(ISerBase* port, int addr);

  ENUM_SERDATKIND GetKind() const { return m_eKind; }

  static constexpr int kCommandCapacity = 32;

  BYTE* m_pData = nullptr;       // the record; null for the alarm controller and the display
  BYTE m_byReserved = 0;         // the application's
  BYTE m_abyReserved[100] = {};  // the application's
  int m_nFlags = 0;              // a driver's once-only queries that have succeeded
  ENUM_SERDATKIND m_eKind;
  BYTE m_byCmd[kCommandCapacity] = {};  // the last request

 protected:
  // Puts the Modbus RTU request for `count` registers, coils or inputs from `reg` on into the command buffer. Returns
  // its length, 8. Sends nothing.
  int ModBusCmd(BYTE addr, BYTE func, WORD reg, WORD count);

  // One request from the command buffer. False unless the port took all of it.
  bool SendCommand(ISerBase* port, int length);
};

namespace fieldline {

// Low byte of a device address, as it goes on the wire.
constexpr BYTE DeviceAddress(int addr) { return static_cast<BYTE>(addr & 0xFF); }

// A driver's base with its record, zero until the first poll. A copy points at its own record.
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
