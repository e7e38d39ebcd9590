#pragma once

#include "fieldline/sensor/sensor_base.h"

// The display's clock, each byte two decimal digits (BCD): 17 May 2024 is 0x24 0x05 0x17. Sent as it stands.
struct DIWEN_RTC_DATA {
  BYTE year;     // of the century, 00 to 99
  BYTE month;    // 01 to 12
  BYTE day;      // 01 to 31
  BYTE weekday;  // as the display counts it
  BYTE hour;     // 00 to 23
  BYTE minute;   // 00 to 59
  BYTE second;   // 00 to 59
};
static_assert(sizeof(DIWEN_RTC_DATA) == 7);

// DWIN DGUS serial display: one object for the process, kind SERDAT_MONITOR. As a driver it polls nothing (GetData
// returns 0) and has no record.
//
// The display is only written to; nothing shows whether it is there. The operations that send return 1 when the port
// took the whole frame, and 0 without a port, on a closed port and after a short or failed write. There is no lock: one
// thread uses the display at a time.
class FIELDLINE_API CHubMonitor : public CSensorBase {
 public:
  // The one object, made on first use. Null when memory is short; a later call tries again.
  static CHubMonitor* GetInstance();

  // Destroys the object. The port stays installed, for the next one too. Deleting the object through its CSensorBase
  // part does the same.
  static void FreeInstance();

  // Installs the display's port, which stays the caller's, should not be open yet, and has its number and speed set. A
  // port that was installed before, this one included, is closed. Null leaves no port.
  static void InitHandler(ISerBase* port);

  // Opens the port with the settings it holds. 1, whether it opened or not; 0 without a port.
  unsigned long diwen_init();

  // Writes a 16-bit value to an address of the variable memory that the pages show.
  unsigned long diwen_set_data(unsigned short addr, unsigned short value);

  // Shows a page.
  unsigned long diwen_set_display(unsigned short page);

  unsigned long diwen_set_rtc(DIWEN_RTC_DATA rtc);

  static ISerBase* m_pHandler;  // not owned

 private:
  friend class CHubSerFactory;

  CHubMonitor();
  ~CHubMonitor() override;

  // For whoever destroys `port`: the display does not hold it from now on. The port is not touched.
  static void ForgetPort(const ISerBase* port);

  static CHubMonitor* m_pInstance;
};
