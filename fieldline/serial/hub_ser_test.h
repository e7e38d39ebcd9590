#pragma once

#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/drivers/basic/sensor_leak.h"
#include "fieldline/drivers/basic/sensor_onoff.h"
#include "fieldline/drivers/imaging/sensor_camera.h"
#include "fieldline/drivers/power/sensor_airc.h"
#include "fieldline/drivers/power/sensor_elec.h"
#include "fieldline/drivers/power/sensor_ups.h"
#include "fieldline/serial/ser_base.h"

// The port for tests and commissioning, type SER_TEST. Open(null) opens COM6: at 2400 bit/s. GetData polls any driver
// of the sensor factory through this port and keeps a copy of the main records.
class FIELDLINE_API CHubSerTest : public CSerBase {
 public:
  CHubSerTest();

  // Polls the sensor factory's driver for `kind` (an ENUM_SERDATKIND) at device address `addr`. The driver must not be
  // polled through another port meanwhile. Returns 1 when the poll succeeded; the record of kinds 1 to 7 and 12 is then
  // copied to its member below. Returns 0 when the poll failed, for a kind without a driver, and when out of memory;
  // the copies are then unchanged.
  int GetData(int kind, int addr) override;

  // The record of each kind's last successful poll, zero before the first. The members follow each other without gaps.
  ENVIR_DATA m_datEnvir = {};
  LEAK_DATA m_datLeak = {};
  ELEC_DATA m_datElec = {};
  ONOFF_DATA m_datOnoff = {};
  BATTERY_DATA m_datBattery = {};
  AIRC_DATA m_datAirc = {};
  UPS_DATA m_datUps = {};
  CAMERA_DATA m_datCamera = {};
};
