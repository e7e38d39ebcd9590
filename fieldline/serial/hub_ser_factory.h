#pragma once

#include <vector>

#include "fieldline/serial/i_ser_base.h"

// Hands out one port per port type and owns it until FreeInstance. Used by one thread, at start-up and shut-down.
class FIELDLINE_API CHubSerFactory {
 public:
  // The one factory, made on first use. Null when memory is short.
  static CHubSerFactory* GetInstance();

  // Destroys the factory and every port it made, from the last to the first. Lines that are still open stay open:
  // close the ports first. The alarm controller and the display forget a port that is destroyed, without closing it;
  // give them a new one (InitHandler).
  static void FreeInstance();

  CHubSerFactory() = default;
  CHubSerFactory(const CHubSerFactory&) = delete;
  CHubSerFactory& operator=(const CHubSerFactory&) = delete;
  ~CHubSerFactory();

  // The port of a type, made closed on first request. Null for a type without a port and when memory is short; a later
  // call tries again.
  ISerBase* GetHubSer(ENUM_SERTYPE type);

  std::vector<ISerBase*> m_arrSer;  // owned, in the order in which they were made

 protected:
  // Takes over a port and returns its index. When a port of that type is here already, returns the index of that one,
  // and the given port stays the caller's. -1 for null and when memory is short.
  int RegisterHubSer(ISerBase* port);

 private:
  static CHubSerFactory* m_pInstance;
};
