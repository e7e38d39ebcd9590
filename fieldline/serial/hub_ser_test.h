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

// The port for tests and commissioning, type SER_TEST: Open(null) opens COM6: at 2400 bit/s. It polls any driver
// through itself and keeps what the main ones read.
class FIELDLINE_API CHubSerTest : public CSerBase {
 public:
  CHubSerTest();

  // Polls the driver that the sensor factory has for `kind` (an ENUM_SERDATKIND) at device address `addr`; the driver
  // is polled through no other port meanwhile. 1 when the poll succeeded: the record of kinds 1 to 7 and 12 is copied
  // to its place below then. 0 when it failed, for a kind without a driver and when memory is short: the copies stay as
  // they were.
  int GetData(int kind, int addr) override;

  // The record of the last poll of each kind that succeeded, zero before it. They follow each other without gaps.
  ENVIR_DATA m_datEnvir = {};
  LEAK_DATA m_datLeak = {};
  ELEC_DATA m_datElec = {};
  ONOFF_DATA m_datOnoff = {};
  BATTERY_DATA m_datBattery = {};
  AIRC_DATA m_datAirc = {};
  UPS_DATA m_datUps = {};
  CAMERA_DATA m_datCamera = {};
};
