#pragma once

#include <cstdint>

#include "fieldline/serial/i_ser_observer.h"
#include "fieldline/types.h"

// The line of the unit that a port uses.
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

// A serial port, as used by drivers, the alarm controller and the display. Applications are compiled against this
// interface: the order of the functions must not change. Not thread-safe: one thread uses a port at a time.
class ISerBase {
 public:
  virtual ENUM_SERTYPE GetSerType() = 0;

  // A text that describes the port. Owned by the port and valid until the port is destroyed.
  virtual wchar_t* GetSerNote() = 0;

  // Opens and configures the line. `def` is device:baud,parity,data bits,stop bits, such as L"COM1:9600,n,8,1" (see
  // port_definition.h). With null, the port builds the definition from its own settings. Returns 1, or 0 on failure.
  virtual int Open(const wchar_t* def) = 0;

  // Releases the line. Always returns 1.
  virtual int Close() = 0;

  // 1 while the port has a device open, otherwise 0.
  virtual int IsOpened() = 0;

  // Does nothing and returns 0.
  virtual int SetDef(const wchar_t* def) = 0;

  // Port number and speed (bit/s) for the definition that Open(null) builds. Always return 1.
  virtual int SetPort(int port) = 0;
  virtual int SetBaud(int baud) = 0;

  // Read time-out in ms, per requested byte and constant part. Takes effect at the next Open. Always returns 1.
  virtual int SetTimeout(int per_byte, int constant) = 0;

  // Discards all bytes received and not read. Bytes still to be sent are discarded too, but a Write leaves none.
  // Returns non-zero on success, 0 when the port is closed or the line is gone.
  virtual int Purge() = 0;

  // Waits until `count` bytes are received, at most per_byte x count + constant ms. Returns the number of bytes
  // received, 0 when there are none, -1 when the port is closed.
  virtual int Read(BYTE* data, int count) = 0;

  // Returns the number of bytes written, -1 when the port is closed or the write failed.
  virtual int Write(const BYTE* data, int count) = 0;

  // Registers an observer. It is not owned and must outlive its registration. Returns its index, also when it is
  // already registered; -1 for null and when out of memory.
  virtual int InsertObserver(ISerObserver* observer) = 0;

  // Removes an observer. Returns the index it had, -1 when it was not registered.
  virtual int RemoveObserver(ISerObserver* observer) = 0;

  // Polls a sensor kind at a device address. Only the test port does this; all other ports return 0.
  virtual int GetData(int kind, int addr) = 0;

 protected:
  ~ISerBase() = default;
};
