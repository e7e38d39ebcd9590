#pragma once

#include <vector>

#include "fieldline/sensor/sensor_base.h"

// Hands out one driver per sensor kind and owns it until FreeInstance. Used by one thread, at start-up and shut-down;
// the test port calls it on the thread that polls.
class FIELDLINE_API CSensorFactory {
 public:
  // The one factory, made on first use. Null when memory is short.
  static CSensorFactory* GetInstance();

  // Destroys the factory and every driver it made, from the last to the first.
  static void FreeInstance();

  CSensorFactory(const CSensorFactory&) = delete;
  CSensorFactory& operator=(const CSensorFactory&) = delete;

  // The driver of a kind, made on first request. Null for a kind without one (13, and the kinds that an application
  // constructs itself, 14 and 15) and when memory is short; a later call tries again.
  //
  // The display and the alarm controller (kinds 10 and 11) are the objects that their own GetInstance returns. They
  // live until their own FreeInstance, in whatever order it and this factory's are called.
  CSensorBase* GetSensor(ENUM_SERDATKIND kind);

  std::vector<CSensorBase*> m_arrSensor;  // owned, in the order of first request

 protected:
  // Takes over a driver and returns its index. When a driver of that kind is here already, returns the index of that
  // one, and the given driver stays the caller's. -1 for null and when memory is short.
  int RegisterSensor(CSensorBase* sensor);

 private:
  CSensorFactory() = default;
  ~CSensorFactory();

  static CSensorFactory* m_pInstance;
};
