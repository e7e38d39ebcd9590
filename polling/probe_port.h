#pragma once

#include "fieldline/serial/ser_base.h"

namespace fieldline {

// A port on which silence is cheap: a read waits for its first byte as long as a read of one byte would, and for the
// rest only when that has come. Drivers that ask for much more than one byte then pass over absent devices quickly.
class ProbePort final : public CSerBase {
 public:
  ProbePort() : CSerBase(SER_COM) {}

  int Read(BYTE* data, int count) override {
    const int first = CSerBase::Read(data, 1);
    if (first != 1 || count == 1) return first;
    const int rest = CSerBase::Read(data + 1, count - 1);
    return rest > 0 ? 1 + rest : 1;
  }
};

}  // namespace fieldline
