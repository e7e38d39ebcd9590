#pragma once

#include <cstdint>

#include "fieldline/serial/i_ser_observer.h"
#include "fieldline/types.h"

// Which line of the unit a port stands for.
enum ENUM_SERTYPE : std::int32_t {
  SER_NONE = 0,
  SER_ESL1 = 1,
  SER_ESL2 = 2,
  SER_ESL3 = 3,
  SER_ESL4 = 4,
  SER_ESL5 = 5,
  SER_ESL6 = 6,
  SER_ESL7 = 7,
  SER_ESL8 = 8,
  SER_TEST = 9,
  SER_COM = 10,
};

// A serial port as drivers, the alarm controller and the display see it. Applications are built against the order of
// these operations. A port has no lock: one thread uses it at a time.
class ISerBase {
 public:
  virtual ENUM_SERTYPE GetSerType() = 0;

  // A text that describes the port; owned by the port and valid while it lives.
  virtual wchar_t* GetSerNote() = 0;

  // Opens and configures the line. `def` is device:baud,parity,data bits,stop bits, such as L"COM1:9600,n,8,1" (see
  // port_definition.h); null stands for a definition built from the port's own settings. 1, or 0 on failure.
  virtual int Open(const wchar_t* def) = 0;

  // Releases the line. 1 in every case.
  virtual int Close() = 0;

  // 1 while the port holds a device, else 0.
  virtual int IsOpened() = 0;

  // Does nothing; 0.
  virtual int SetDef(const wchar_t* def) = 0;

  // Number and speed (bit/s) for the definition that Open(null) builds. 1.
  virtual int SetPort(int port) = 0;
  virtual int SetBaud(int baud) = 0;

  // Read time-out per requested byte and its constant part, in ms, from the next Open on. 1.
  virtual int SetTimeout(int per_byte, int constant) = 0;

  // Discards everything received and not read, and everything written and not sent. Non-zero on success, 0 when the
  // port is closed.
  virtual int Purge() = 0;

  // Waits for `count` bytes, at most per_byte x count + constant ms. Returns how many came (0 when none), -1 when the
  // port is closed.
  virtual int Read(BYTE* data, int count) = 0;

  // Returns the number of bytes written, -1 when the port is closed or the write failed.
  virtual int Write(const BYTE* data, int count) = 0;

  // Registers an observer, which stays the caller's and must outlive its registration. Returns its index, also when it
  // was registered already; -1 for null or when memory is short.
  virtual int InsertObserver(ISerObserver* observer) = 0;

  // Returns the index that the observer had, -1 when it was not registered.
  virtual int RemoveObserver(ISerObserver* observer) = 0;

  // Polls a sensor kind at a device address through the test port; any other port returns 0.
  virtual int GetData(int kind, int addr) = 0;

 protected:
  ~ISerBase() = default;
};
