#pragma once

#include <vector>

#include "fieldline/serial/i_ser_base.h"

// Creates one port per port type and owns it until FreeInstance. Not thread-safe: one thread uses it, at start-up and
// shut-down.
class FIELDLINE_API CHubSerFactory {
 public:
  // The only factory, created on first use. Null when out of memory.
  static CHubSerFactory* GetInstance();

  // Destroys the factory and every port it created, the last one first. Lines that are still open stay open: close the
  // ports first. The alarm controller and the display drop their pointer to a destroyed port without closing it; give
  // them a new port with InitHandler.
  static void FreeInstance();

  CHubSerFactory() = default;
  CHubSerFactory(const CHubSerFactory&) = delete;
  CHubSerFactory& operator=(const CHubSerFactory&) = delete;
  ~CHubSerFactory();

  // The port of this type, created closed on the first call. Null for a type without a port and when out of memory; a
  // later call tries again.
  ISerBase* GetHubSer(ENUM_SERTYPE type);

  std::vector<ISerBase*> m_arrSer;  // owned, in order of creation

 protected:
  // Takes ownership of a port and returns its index. When there is already a port of that type, returns the index of
  // that port, and the caller keeps the new one. -1 for null and when out of memory.
  int RegisterHubSer(ISerBase* port);

 private:
  static CHubSerFactory* m_pInstance;
};
