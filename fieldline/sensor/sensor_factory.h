#pragma once

#include <vector>

#include "fieldline/sensor/sensor_base.h"

// Creates one driver per sensor kind and owns it until FreeInstance. Not thread-safe: one thread uses it, at start-up
// and shut-down. The test port calls it on the thread that polls.
class FIELDLINE_API CSensorFactory {
 public:
  // The only factory, created on first use. Null when out of memory.
  static CSensorFactory* GetInstance();

  // Destroys the factory and every driver it created, the last one first.
  static void FreeInstance();

  CSensorFactory(const CSensorFactory&) = delete;
  CSensorFactory& operator=(const CSensorFactory&) = delete;

  // The driver of a kind, created on the first call. Null for a kind without a driver (13, and kinds 14 and 15, which
  // the application constructs itself) and when out of memory; a later call tries again.
  //
  // For the display and the alarm controller (kinds 10 and 11), returns the object of their own GetInstance. Only their
  // own FreeInstance destroys them, before or after this factory's.
  CSensorBase* GetSensor(ENUM_SERDATKIND kind);

  std::vector<CSensorBase*> m_arrSensor;  // owned, in order of creation

 protected:
  // Takes ownership of a driver and returns its index. When there is already a driver of that kind, returns the index
  // of that driver, and the caller keeps the new one. -1 for null and when out of memory.
  int RegisterSensor(CSensorBase* sensor);

 private:
  CSensorFactory() = default;
  ~CSensorFactory();

  static CSensorFactory* m_pInstance;
};
